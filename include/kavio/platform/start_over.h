#pragma once

#include <kavio/platform/platform.h>

#include <memory>

namespace kavio {

/// For tests: forgets what the library keeps for the process, as if the program started again, on `platform`; without
/// one, the library's own is made when it is needed. Returns the platform before, null if there was none. No operation
/// may be under way.
KAVIO_API std::unique_ptr<Platform> startOver(std::unique_ptr<Platform> platform);

}  // namespace kavio
