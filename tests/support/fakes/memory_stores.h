#pragma once

#include "platform/linux/memory_store.h"

#include <kavio/platform/key_value_store.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// Suites in memory, which can be told to refuse.
class MemoryStores final : public KeyValueStores {
public:
    std::shared_ptr<KeyValueStore> suite(std::string_view name) override {
        return refusesSuites ? nullptr : open("suite " + std::string(name));
    }
    std::shared_ptr<KeyValueStore> standard() override { return open("standard"); }

    std::atomic<bool> refusesSuites = false;  // new or known ones
    /// For every suite, as on a full disk.
    const std::shared_ptr<std::atomic<bool>> refusesWrites = std::make_shared<std::atomic<bool>>(false);

    /// What has been opened so far: "suite NAME" and "standard", sorted.
    std::vector<std::string> names() const {
        const std::lock_guard lock(mMutex);
        std::vector<std::string> names;
        for (const auto& [name, suite] : mSuites) names.push_back(name);
        return names;
    }

private:
    struct Store final : KeyValueStore {
        explicit Store(std::shared_ptr<std::atomic<bool>> refusing) : refuses(std::move(refusing)) {}
        std::optional<StoredValue> value(std::string_view key) const override { return values.value(key); }
        std::vector<std::string> keys() const override { return values.keys(); }
        bool write(const StoreChanges& changes) override { return !*refuses && values.write(changes); }

        const std::shared_ptr<const std::atomic<bool>> refuses;
        MemoryStore values;
    };
    std::shared_ptr<KeyValueStore> open(const std::string& name) {
        const std::lock_guard lock(mMutex);
        auto& suite = mSuites[name];
        if (!suite) suite = std::make_shared<Store>(refusesWrites);
        return suite;
    }

    mutable std::mutex mMutex;
    std::map<std::string, std::shared_ptr<KeyValueStore>> mSuites;
};

}  // namespace kavio::test
