#include "models/date_text.h"

#include <kavio/platform/platform.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kavio {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using Milliseconds = std::chrono::sys_time<milliseconds>;

// A date's pattern, and whether its locale and zone are fixed or the device's own. Constants without a destructor: a
// reply may still be read while the program's statics are being destroyed.
struct Layout {
    const char* pattern;
    const char* locale;
    const char* timeZone;
};
constexpr Layout posixFormat{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
constexpr Layout localFormat{"yyyy-MM-dd'T'HH:mm:ss.SSS", nullptr, "UTC"};
constexpr Layout secondsFormat{"yyyy-MM-dd'T'HH:mm:ss", "en_US_POSIX", "UTC"};
constexpr Layout offsetFormat{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", nullptr, nullptr};
constexpr Layout stampFormat{"yyyyMMddHHmmss", "en_US_POSIX", "UTC"};
constexpr Layout debugFormat{"yyyy-MM-dd HH:mm:ss xx", "en_US_POSIX", "UTC"};

DateFormat dateFormat(const Layout& layout) {
    const auto optional = [](const char* text) {
        return text == nullptr ? std::nullopt : std::optional<std::string>(text);
    };
    return {layout.pattern, optional(layout.locale), optional(layout.timeZone)};
}

// Years after the Gregorian reform, for which the formatter's calendar is the civil one, and with four digits.
constexpr int firstOrdinaryYear = 1583;
constexpr int lastOrdinaryYear = 9999;

// Layouts: a "0" stands for a digit, anything else for itself.
constexpr std::string_view secondsLayout = "0000-00-00T00:00:00";
constexpr std::string_view millisecondsLayout = "0000-00-00T00:00:00.000";
constexpr std::string_view stampLayout = "00000000000000";
constexpr std::string_view eastLayout = "+0000";
constexpr std::string_view westLayout = "-0000";
constexpr std::string_view debugLayout = "0000-00-00 00:00:00";

template <const std::string_view& layout>
bool matches(std::string_view text) {
    if (text.size() != layout.size()) return false;
    unsigned char differences = 0;  // no early exit: most texts match, and this way it takes a few wide instructions
    for (std::size_t i = 0; i < layout.size(); ++i) {
        const auto above = static_cast<unsigned char>(text[i] - layout[i]);
        const unsigned char most = layout[i] == '0' ? 9 : 0;
        differences |= static_cast<unsigned char>(above > most);
    }
    return differences == 0;
}

template <int Digits>
int number(const char* digit) {
    int value = 0;
    for (int i = 0; i < Digits; ++i) value = value * 10 + (digit[i] - '0');
    return value;
}

/// An ordinary text, "2024-03-05T14:07:09" with whatever fraction `layout` has. Absent: ask the platform.
template <const std::string_view& layout>
std::optional<Milliseconds> parseOrdinary(std::string_view text) {
    if (!matches<layout>(text)) return std::nullopt;
    const char* const digits = text.data();
    const std::chrono::year_month_day date{std::chrono::year(number<4>(digits)),
                                           std::chrono::month(static_cast<unsigned>(number<2>(digits + 5))),
                                           std::chrono::day(static_cast<unsigned>(number<2>(digits + 8)))};
    const hours hour(number<2>(digits + 11));
    const minutes minute(number<2>(digits + 14));
    const seconds second(number<2>(digits + 17));
    if (!date.ok() || date.year() < std::chrono::year(firstOrdinaryYear) || hour >= days(1) || minute >= hours(1) ||
        second >= minutes(1)) {
        return std::nullopt;
    }
    const milliseconds fraction(layout.size() == millisecondsLayout.size() ? number<3>(digits + 20) : 0);
    return std::chrono::sys_days(date) + hour + minute + second + fraction;
}

/// "+0100". Absent: ask the platform.
std::optional<minutes> parseOffset(std::string_view text) {
    if (!matches<eastLayout>(text) && !matches<westLayout>(text)) return std::nullopt;
    const hours hour(number<2>(text.data() + 1));
    const minutes minute(number<2>(text.data() + 3));
    if (hour >= hours(12) || minute >= hours(1)) return std::nullopt;
    return text[0] == '-' ? -(hour + minute) : hour + minute;
}

Date toDate(Milliseconds instant) {
    return Date(Date::duration(static_cast<double>(instant.time_since_epoch().count()) / 1000));
}

std::optional<Date> parseByPlatform(const Layout& layout, std::string_view text) {
    if (text.empty()) return std::nullopt;  // the service's way of saying "never"
    return Platform::current().dateFormatter->parse(dateFormat(layout), text);
}

std::string formatByPlatform(const Layout& layout, Date date) {
    return Platform::current().dateFormatter->format(dateFormat(layout), date);
}

/// A date rounded down to whole milliseconds; absent outside the ordinary years.
std::optional<Milliseconds> ordinary(Date date) {
    constexpr auto first = std::chrono::sys_days(std::chrono::year(firstOrdinaryYear) / 1 / 1);
    constexpr auto end = std::chrono::sys_days(std::chrono::year(lastOrdinaryYear + 1) / 1 / 1);
    if (!(date >= first && date < end)) return std::nullopt;
    // A double cannot hold most milliseconds exactly, so 0.25 may be a little less: by less than half a microsecond or,
    // in the far future, than the distance between two doubles. Seconds are kept apart: with them, a sum is less exact.
    const double count = date.time_since_epoch().count();
    const Date::duration less(std::max(5e-7, std::nextafter(count, std::numeric_limits<double>::infinity()) - count));
    const auto second = std::chrono::floor<seconds>(date);
    return std::min(second + std::chrono::floor<milliseconds>(date - second + less),
                    Milliseconds(end) - milliseconds(1));
}

/// The first digits of year, month, day, hour, minute, second and millisecond, as many as `layout` has room for.
std::string write(Milliseconds instant, std::string_view layout) {
    const auto day = std::chrono::floor<days>(instant);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(instant - day);

    std::string digits;
    const auto append = [&digits](auto value, std::size_t width) {
        const auto text = std::to_string(value);
        digits.append(width - text.size(), '0').append(text);
    };
    append(static_cast<int>(date.year()), 4);
    append(static_cast<unsigned>(date.month()), 2);
    append(static_cast<unsigned>(date.day()), 2);
    append(time.hours().count(), 2);
    append(time.minutes().count(), 2);
    append(time.seconds().count(), 2);
    append(time.subseconds().count(), 3);

    std::string text(layout);
    auto digit = digits.begin();
    for (auto& c : text) {
        if (c == '0') c = *digit++;
    }
    return text;
}

}  // namespace

std::optional<Date> DateText::parse(std::string_view text) {
    if (const auto instant = parseOrdinary<millisecondsLayout>(text)) return toDate(*instant);
    return parseByPlatform(posixFormat, text);
}

std::optional<Date> DateText::parseLocalized(std::string_view text) {
    if (const auto instant = parseOrdinary<millisecondsLayout>(text)) return toDate(*instant);
    return parseByPlatform(localFormat, text);
}

std::optional<Date> DateText::parseSeconds(std::string_view text) {
    if (const auto instant = parseOrdinary<secondsLayout>(text)) return toDate(*instant);
    return parseByPlatform(secondsFormat, text);
}

std::optional<Date> DateText::parseWithOffset(std::string_view text) {
    const auto split = std::min(text.size(), millisecondsLayout.size());
    const auto instant = parseOrdinary<millisecondsLayout>(text.substr(0, split));
    const auto offset = parseOffset(text.substr(split));
    if (instant && offset) return toDate(*instant - *offset);
    return parseByPlatform(offsetFormat, text);
}

std::string DateText::format(Date date) {
    const auto instant = ordinary(date);
    return instant ? write(*instant, millisecondsLayout) : formatByPlatform(posixFormat, date);
}

std::string DateText::stamp(Date date) {
    const auto instant = ordinary(date);
    return instant ? write(*instant, stampLayout) : formatByPlatform(stampFormat, date);
}

std::string DateText::debug(Date date) {
    const auto instant = ordinary(date);
    return instant ? write(*instant, debugLayout) + " +0000" : formatByPlatform(debugFormat, date);
}

Date DateText::now() { return Platform::current().clock->now(); }

}  // namespace kavio
