#include "util/shared_instance.h"

#include <mutex>
#include <unordered_map>

namespace kavio {
namespace {

struct Registry {
    std::mutex mutex;
    // Not in an order: that of types is inconsistent on 32 bit ARM, where those of anonymous namespaces take part.
    std::unordered_map<std::type_index, std::shared_ptr<void>> instances;
};

// Never destroyed: a reply may still arrive while the program's statics are being destroyed.
Registry& registry() {
    static auto* instance = new Registry;
    return *instance;
}

}  // namespace

std::shared_ptr<void> detail::sharedInstance(std::type_index type, const std::function<std::shared_ptr<void>()>& make) {
    auto& [mutex, instances] = registry();
    {
        const std::lock_guard lock(mutex);
        if (const auto found = instances.find(type); found != instances.end()) return found->second;
    }
    // Without the lock: making it may need other instances, wait for a disk or call the host. If two threads make the
    // same, the first one's stays.
    auto made = make();
    const std::lock_guard lock(mutex);
    return instances.try_emplace(type, std::move(made)).first->second;
}

std::shared_ptr<void> forgetSharedInstances() {
    auto& [mutex, instances] = registry();
    const auto forgotten = std::make_shared<decltype(Registry::instances)>();
    const std::lock_guard lock(mutex);
    forgotten->swap(instances);
    return forgotten;
}

}  // namespace kavio
