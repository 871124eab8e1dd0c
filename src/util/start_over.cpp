#include "platform/current_platform.h"
#include "util/shared_instance.h"

#include <kavio/platform/start_over.h>

#include <utility>

namespace kavio {

std::unique_ptr<Platform> startOver(std::unique_ptr<Platform> platform, std::shared_ptr<void>* abandoned) {
    auto instances = forgetSharedInstances();
    if (abandoned != nullptr) *abandoned = std::move(instances);
    instances.reset();  // on the platform that they were made for
    return exchangePlatform(std::move(platform));
}

}  // namespace kavio
