#include "times.h"

#include <fmt/chrono.h>

namespace kavio::sandbox {

std::string secondsText(TimePoint time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}", fmt::gmtime(std::chrono::system_clock::to_time_t(time)));
}

std::string millisecondsText(TimePoint time) {
    using namespace std::chrono;
    const auto whole = floor<seconds>(time);
    return fmt::format("{}.{:03}", secondsText(whole), floor<milliseconds>(time - whole).count());
}

}  // namespace kavio::sandbox
