#pragma once

#include <kavio/platform/key_value_store.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// Suites in memory that can be told to refuse.
class MemoryStores final : public KeyValueStores {
public:
    std::shared_ptr<KeyValueStore> suite(std::string_view name) override;
    std::shared_ptr<KeyValueStore> standard() override { return open("standard"); }

    /// From now on no suite is given, new or known.
    void refuseSuites() { mRefusesSuites = true; }
    /// Whether every later write of every suite fails, as on a full disk.
    void refuseWrites(bool refuse) { *mRefusesWrites = refuse; }
    /// What was opened so far: "suite NAME" and "standard", sorted.
    std::vector<std::string> names() const;

private:
    std::shared_ptr<KeyValueStore> open(const std::string& name);

    mutable std::mutex mMutex;
    std::map<std::string, std::shared_ptr<KeyValueStore>> mSuites;
    std::atomic<bool> mRefusesSuites = false;
    const std::shared_ptr<std::atomic<bool>> mRefusesWrites = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace kavio::test
