#pragma once

#include <kavio/platform/platform.h>

#include <memory>

namespace kavio {

/// The platform that the library makes for a host that installs none; null in a library that was built without one. The
/// implementation is in the folder of the platform that the build was configured with.
std::unique_ptr<Platform> makeDefaultPlatform();

}  // namespace kavio
