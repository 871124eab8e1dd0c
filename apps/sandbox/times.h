#pragma once

#include <chrono>
#include <string>

namespace kavio::sandbox {

using TimePoint = std::chrono::system_clock::time_point;

/// "2024-03-05T14:07:09" and "2024-03-05T14:07:09.250", in UTC.
std::string secondsText(TimePoint time);
std::string millisecondsText(TimePoint time);

}  // namespace kavio::sandbox
