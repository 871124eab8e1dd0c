#include "support/fakes/memory_stores.h"

#include "platform/linux/memory_store.h"

#include <atomic>
#include <vector>

namespace kavio::test {
namespace {

class RefusingStore final : public KeyValueStore {
public:
    explicit RefusingStore(std::shared_ptr<const std::atomic<bool>> refuses) : mRefuses(std::move(refuses)) {}

    std::optional<StoredValue> value(std::string_view key) const override { return mValues.value(key); }
    bool write(const StoreChanges& changes) override { return !*mRefuses && mValues.write(changes); }

private:
    MemoryStore mValues;
    const std::shared_ptr<const std::atomic<bool>> mRefuses;
};

}  // namespace

std::shared_ptr<KeyValueStore> MemoryStores::suite(std::string_view name) {
    if (mRefusesSuites) return nullptr;
    return open("suite " + std::string(name));
}

std::vector<std::string> MemoryStores::names() const {
    const std::lock_guard lock(mMutex);
    std::vector<std::string> names;
    for (const auto& [name, suite] : mSuites) names.push_back(name);
    return names;
}

std::shared_ptr<KeyValueStore> MemoryStores::open(const std::string& name) {
    const std::lock_guard lock(mMutex);
    auto& suite = mSuites[name];
    if (!suite) suite = std::make_shared<RefusingStore>(mRefusesWrites);
    return suite;
}

}  // namespace kavio::test
