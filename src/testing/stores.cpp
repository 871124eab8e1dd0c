#include <kavio/testing/stores.h>

#include <utility>

namespace kavio::test {

struct MemoryStores::State {
    /// Whether a write succeeds. Asked without the lock: what a test decides may look at the stores.
    bool decide() {
        std::unique_lock lock(mutex);
        const auto decided = succeeds;
        lock.unlock();
        return !decided || decided();
    }

    mutable std::mutex mutex;  // guards everything here and the values of every suite
    bool refusesSuites = false;
    std::function<bool()> succeeds;
    std::map<std::string, std::shared_ptr<Suite>> suites;
};

class MemoryStores::Suite final : public KeyValueStore {
public:
    explicit Suite(std::shared_ptr<State> stores) : mStores(std::move(stores)) {}

    std::optional<StoredValue> value(std::string_view key) const override {
        const std::lock_guard lock(mMutex);
        const auto found = mValues.find(key);
        return found == mValues.end() ? std::nullopt : std::optional(found->second);
    }
    std::vector<std::string> keys() const override {
        const std::lock_guard lock(mMutex);
        std::vector<std::string> keys;
        for (const auto& [key, value] : mValues) keys.push_back(key);
        return keys;
    }
    bool write(const StoreChanges& changes) override {
        if (!mStores->decide()) return false;
        const std::lock_guard lock(mMutex);
        auto values = mValues;  // when memory runs out, nothing has changed
        for (const auto& [key, value] : changes) {
            if (value)
                values.insert_or_assign(key, *value);
            else
                values.erase(key);
        }
        mValues.swap(values);
        return true;
    }

private:
    const std::shared_ptr<State> mStores;
    mutable std::mutex mMutex;
    std::map<std::string, StoredValue, std::less<>> mValues;
};

MemoryStores::MemoryStores() : mState(std::make_shared<State>()) {}
MemoryStores::~MemoryStores() {
    const std::lock_guard lock(mState->mutex);
    mState->suites.clear();  // a suite holds the state
}

std::shared_ptr<KeyValueStore> MemoryStores::suite(std::string_view name) {
    {
        const std::lock_guard lock(mState->mutex);
        if (mState->refusesSuites) return nullptr;
    }
    return open("suite " + std::string(name));
}
std::shared_ptr<KeyValueStore> MemoryStores::standard() { return open("standard"); }

std::shared_ptr<KeyValueStore> MemoryStores::open(const std::string& name) {
    const std::lock_guard lock(mState->mutex);
    auto& suite = mState->suites[name];
    if (!suite) suite = std::make_shared<Suite>(mState);
    return suite;
}

void MemoryStores::refuseSuites(bool refuse) {
    const std::lock_guard lock(mState->mutex);
    mState->refusesSuites = refuse;
}
void MemoryStores::refuseWrites(bool refuse) {
    decideWrites(refuse ? [] { return false; } : std::function<bool()>());
}
void MemoryStores::decideWrites(std::function<bool()> succeeds) {
    const std::lock_guard lock(mState->mutex);
    mState->succeeds = std::move(succeeds);
}

std::vector<std::string> MemoryStores::names() const {
    const std::lock_guard lock(mState->mutex);
    std::vector<std::string> names;
    for (const auto& [name, suite] : mState->suites) names.push_back(name);
    return names;
}

}  // namespace kavio::test
