#include "platform/default_platform.h"

namespace kavio {

std::unique_ptr<Platform> makeDefaultPlatform() { return nullptr; }

}  // namespace kavio
