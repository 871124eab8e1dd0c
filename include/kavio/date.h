#pragma once

#include <chrono>

namespace kavio {

/// An instant: seconds since 1970-01-01 00:00:00 UTC in double precision, so that no date in a reply can overflow.
using Date = std::chrono::sys_time<std::chrono::duration<double>>;

}  // namespace kavio
