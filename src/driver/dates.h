#pragma once

#include <kavio/date.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio::driver {

/// ISO 8601 in UTC with milliseconds, such as "2024-03-05T14:07:09.250Z". Absent for a date outside the years 0 to
/// 9999, which the form cannot hold.
std::optional<std::string> isoText(Date date);
/// Absent for any other form.
std::optional<Date> dateFromIso(std::string_view text);

}  // namespace kavio::driver
