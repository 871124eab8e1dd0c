#pragma once

#include <kavio/platform/platform.h>

#include <memory>

namespace kavio {

/// Puts `next` in the place of the process's platform, whatever it was, and gives the former one. Null: none was made
/// yet. For tests, which start over; nothing that ships calls it.
std::unique_ptr<Platform> exchangePlatform(std::unique_ptr<Platform> next);

}  // namespace kavio
