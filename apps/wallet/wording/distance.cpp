#include "distance.h"

#include "wording/language.h"
#include "wording/text.h"

#include <unicode/measunit.h>
#include <unicode/numberformatter.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kavio::wallet {

namespace {

constexpr double earthRadius = 6'371'000;

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

}  // namespace

double metresBetween(double latitude, double longitude, double otherLatitude, double otherLongitude) {
    const auto up = std::sin(radians(otherLatitude - latitude) / 2);
    const auto aside = std::sin(radians(otherLongitude - longitude) / 2);
    const auto haversine = up * up + std::cos(radians(latitude)) * std::cos(radians(otherLatitude)) * aside * aside;
    return 2 * earthRadius * std::asin(std::min(1.0, std::sqrt(haversine)));
}

std::string distanceText(double metres) {
    using icu::number::NumberFormatter;
    using icu::number::Precision;
    const bool isNear = metres < 995;  // what is rounded to a kilometre is called one
    auto problem = U_ZERO_ERROR;
    const auto text = NumberFormatter::withLocale(icu::Locale(customs().amounts.c_str()))
                          .unit(isNear ? icu::MeasureUnit::getMeter() : icu::MeasureUnit::getKilometer())
                          .unitWidth(UNUM_UNIT_WIDTH_SHORT)
                          .precision(isNear ? Precision::increment(10).withMinFraction(0) : Precision::maxFraction(1))
                          .formatDouble(isNear ? metres : metres / 1000, problem)
                          .toString(problem);
    return withoutMarks(text);
}

}  // namespace kavio::wallet
