#pragma once

#include <cstdint>
#include <limits>

namespace kavio {

/// `value` without its fraction; the nearest integer that fits if it is out of range.
inline std::int64_t saturatingInteger(double value) {
    constexpr double bound = 0x1p63;
    if (!(value > -bound)) return std::numeric_limits<std::int64_t>::min();
    return value < bound ? static_cast<std::int64_t>(value) : std::numeric_limits<std::int64_t>::max();
}

/// `value` plus an `addend` that is zero or more.
inline std::int64_t saturatingSum(std::int64_t value, std::int64_t addend) {
    constexpr auto maximum = std::numeric_limits<std::int64_t>::max();
    return value > maximum - addend ? maximum : value + addend;
}

}  // namespace kavio
