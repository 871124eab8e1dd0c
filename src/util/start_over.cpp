#include "platform/current_platform.h"
#include "util/shared_instance.h"

#include <kavio/platform/start_over.h>

#include <utility>

namespace kavio {

std::unique_ptr<Platform> startOver(std::unique_ptr<Platform> platform) {
    forgetSharedInstances();
    return exchangePlatform(std::move(platform));
}

}  // namespace kavio
