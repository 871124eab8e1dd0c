#include "platform/current_platform.h"

#include <kavio/platform/linux.h>
#include <kavio/platform/platform.h>

#include <mutex>
#include <utility>

namespace kavio {
namespace {

std::mutex& currentMutex() {
    static std::mutex mutex;
    return mutex;
}

// Never destroyed: background threads of the platform may outlive the statics of the program.
std::unique_ptr<Platform>& currentPlatform() {
    static auto* current = new std::unique_ptr<Platform>;
    return *current;
}

}  // namespace

Platform& Platform::current() {
    const std::lock_guard lock(currentMutex());
    auto& current = currentPlatform();
    if (!current) current = std::make_unique<Platform>(makeLinuxPlatform());
    return *current;
}

bool Platform::install(Platform platform) {
    const std::lock_guard lock(currentMutex());
    auto& current = currentPlatform();
    if (current) return false;
    current = std::make_unique<Platform>(std::move(platform));
    return true;
}

std::unique_ptr<Platform> exchangePlatform(std::unique_ptr<Platform> next) {
    const std::lock_guard lock(currentMutex());
    return std::exchange(currentPlatform(), std::move(next));
}

}  // namespace kavio
