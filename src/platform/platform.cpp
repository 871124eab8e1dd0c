#include "platform/current_platform.h"
#include "platform/default_platform.h"

#include <kavio/platform/platform.h>

#include <cstdio>
#include <cstdlib>
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

// A mistake in the program that nothing can make up for: without a device, there is no way to report it either.
[[noreturn]] void endForWantOfAPlatform() {
    std::fputs("Kavio: no platform is installed, and this build has no default one: call Platform::install first.\n",
               stderr);
    std::abort();
}

}  // namespace

Platform& Platform::current() {
    const std::lock_guard lock(currentMutex());
    auto& current = currentPlatform();
    if (!current) current = makeDefaultPlatform();
    if (!current) endForWantOfAPlatform();
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
