#pragma once

#include <kavio/platform/key_value_store.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kavio {

/// A suite that ends with the process, for use when nothing can be written.
class MemoryStore final : public KeyValueStore {
public:
    std::optional<StoredValue> value(std::string_view key) const override {
        const std::lock_guard lock(mMutex);
        const auto found = mValues.find(key);
        if (found == mValues.end()) return std::nullopt;
        return found->second;
    }

    std::vector<std::string> keys() const override {
        const std::lock_guard lock(mMutex);
        std::vector<std::string> keys;
        for (const auto& [key, value] : mValues) keys.push_back(key);
        return keys;
    }

    bool write(const StoreChanges& changes) override {
        const std::lock_guard lock(mMutex);
        for (const auto& [key, value] : changes) {
            if (value) {
                mValues.insert_or_assign(key, *value);
            } else {
                mValues.erase(key);
            }
        }
        return true;
    }

    bool isKept() const override { return false; }

private:
    mutable std::mutex mMutex;
    std::map<std::string, StoredValue, std::less<>> mValues;
};

}  // namespace kavio
