#pragma once

#include <kavio/platform/platform.h>

#include <memory>

namespace kavio {

/// Replaces the process's platform, whatever it is, with `next`, and returns the former one; null if none had been
/// made. For tests, which start over; no shipped code calls it.
std::unique_ptr<Platform> exchangePlatform(std::unique_ptr<Platform> next);

}  // namespace kavio
