// Stores of a port that keeps its values in this process, once without and several times with a fault.
#include <kavio/testing/conformance/stores.h>

#include <mutex>

namespace kavio::test {
namespace {

enum class Fault { NONE, FORGETS_REMOVALS, KEEPS_NOTHING, SAYS_YES_TO_FAILED_WRITES, MIXES_SUITES, WRITES_ONE_BY_ONE };

/// What one folder holds.
struct Disk {
    std::mutex mutex;
    std::map<std::string, std::map<std::string, StoredValue, std::less<>>> suites;
    bool isFull = false;
};

class Store final : public KeyValueStore {
public:
    Store(std::shared_ptr<Disk> disk, std::string name, Fault fault)
        : mDisk(std::move(disk)), mName(std::move(name)), mFault(fault) {}
    std::optional<StoredValue> value(std::string_view key) const override {
        const std::lock_guard lock(mDisk->mutex);
        const auto& values = mDisk->suites[mName];
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
    std::vector<std::string> keys() const override {
        const std::lock_guard lock(mDisk->mutex);
        std::vector<std::string> keys;
        for (const auto& [key, value] : mDisk->suites[mName]) keys.push_back(key);
        return keys;
    }
    bool write(const StoreChanges& changes) override {
        if (mFault == Fault::WRITES_ONE_BY_ONE && changes.size() > 1) {
            bool isWritten = true;
            for (const auto& change : changes) {
                isWritten = write({change}) && isWritten;
                std::this_thread::yield();
            }
            return isWritten;
        }
        const std::lock_guard lock(mDisk->mutex);
        if (mDisk->isFull) return mFault == Fault::SAYS_YES_TO_FAILED_WRITES;
        for (const auto& [key, value] : changes) {
            if (value)
                mDisk->suites[mName].insert_or_assign(key, *value);
            else if (mFault != Fault::FORGETS_REMOVALS)
                mDisk->suites[mName].erase(key);
        }
        return true;
    }

private:
    const std::shared_ptr<Disk> mDisk;
    const std::string mName;
    const Fault mFault;
};

class Stores final : public KeyValueStores {
public:
    Stores(std::shared_ptr<Disk> disk, Fault fault) : mDisk(std::move(disk)), mFault(fault) {}
    std::shared_ptr<KeyValueStore> suite(std::string_view name) override {
        return open("suite " + std::string(name.substr(0, mFault == Fault::MIXES_SUITES ? 128 : name.npos)));
    }
    std::shared_ptr<KeyValueStore> standard() override { return open("standard"); }
    void fill(bool isFull) {
        const std::lock_guard lock(mDisk->mutex);
        mDisk->isFull = isFull;
    }

private:
    std::shared_ptr<KeyValueStore> open(std::string name) {
        return std::make_shared<Store>(mDisk, std::move(name), mFault);
    }
    const std::shared_ptr<Disk> mDisk;
    const Fault mFault;
};

Port storesWith(Fault fault) {
    return {
        .name = "Stores",
        .start =
            [fault](const std::filesystem::path& folder) {
                static std::map<std::filesystem::path, std::shared_ptr<Disk>> disks;
                auto& disk = disks[folder];
                if (!disk || fault == Fault::KEEPS_NOTHING) disk = std::make_shared<Disk>();
                auto platform = std::make_shared<Platform>();
                platform->keyValueStores = std::make_shared<Stores>(disk, fault);
                return platform;
            },
        .failWrites = [](Platform& platform, bool fail) { dynamic_cast<Stores&>(*platform.keyValueStores).fill(fail); },
    };
}

INSTANTIATE_TEST_SUITE_P(Good, StoresConformance, testing::Values(storesWith(Fault::NONE)));
INSTANTIATE_TEST_SUITE_P(ForgetsRemovals, StoresConformance, testing::Values(storesWith(Fault::FORGETS_REMOVALS)));
INSTANTIATE_TEST_SUITE_P(KeepsNothing, StoresConformance, testing::Values(storesWith(Fault::KEEPS_NOTHING)));
INSTANTIATE_TEST_SUITE_P(SaysYes, StoresConformance, testing::Values(storesWith(Fault::SAYS_YES_TO_FAILED_WRITES)));
INSTANTIATE_TEST_SUITE_P(MixesSuites, StoresConformance, testing::Values(storesWith(Fault::MIXES_SUITES)));
INSTANTIATE_TEST_SUITE_P(OneByOne, StoresConformance, testing::Values(storesWith(Fault::WRITES_ONE_BY_ONE)));

}  // namespace
}  // namespace kavio::test
