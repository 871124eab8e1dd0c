#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kavio::device {

struct Position {
    double latitude;
    double longitude;
};

/// Calls once, on the main thread, as soon as the device has a service that may know its position; never where it has
/// none.
void whenPositionIsThere(std::function<void()> isThere);

/// Calls once, on the main thread, with where the device is; or without, and with a sentence on why that is not known.
void askPosition(std::function<void(std::optional<Position>, std::string problem)> then);

}  // namespace kavio::device
