#include "driver/dates.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <cstdio>

namespace kavio::driver {

using namespace std::chrono;

std::optional<std::string> isoText(Date date) {
    constexpr sys_days first = year{0} / January / 1;
    constexpr sys_days past = year{10000} / January / 1;
    if (!(date >= first && date < past)) return std::nullopt;  // not a number fails both

    // Rounded: a double just below a millisecond stands for that millisecond.
    const sys_time<milliseconds> instant{milliseconds{std::llround(date.time_since_epoch().count() * 1000.0)}};
    const auto midnight = floor<days>(instant);
    const year_month_day day{midnight};
    const hh_mm_ss time{instant - midnight};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", static_cast<int>(day.year()),
                       static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), time.hours().count(),
                       time.minutes().count(), time.seconds().count(), time.subseconds().count());
}

std::optional<Date> dateFromIso(std::string_view text) {
    int y = 0, mon = 0, d = 0, h = 0, min = 0, s = 0, ms = 0;
    const std::string form{text};
    if (std::sscanf(form.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d.%3dZ", &y, &mon, &d, &h, &min, &s, &ms) != 7)
        return std::nullopt;
    const Date date = sys_days{year{y} / mon / d} + hours{h} + minutes{min} + seconds{s} + milliseconds{ms};
    // Accepts only the form that we write, and only days and times that exist: anything else is written differently.
    return isoText(date) == text ? std::optional{date} : std::nullopt;
}

}  // namespace kavio::driver
