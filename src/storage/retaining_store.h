#pragma once

#include <kavio/platform/key_value_store.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace kavio {

/// A suite whose changes always count in this process: what cannot be written is kept in memory, and is written with
/// the next change that can be. So a full disk neither signs a person out nor leaves the key or token of another run in
/// use.
class RetainingStore final : public KeyValueStore {
public:
    explicit RetainingStore(std::shared_ptr<KeyValueStore> suite) : mSuite(std::move(suite)) {}

    std::optional<StoredValue> value(std::string_view key) const override { return values({key}).front(); }
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys) const override;
    /// False when the changes are not in the suite, and end with this process unless a later write takes them along.
    bool write(const StoreChanges& changes) override;

private:
    void keep(const StoreChanges& changes);
    StoreChanges unwritten() const;

    const std::shared_ptr<KeyValueStore> mSuite;
    // Held over a whole write: one that takes along what is unwritten must not put that over a later write's value. The
    // suite may report to the host, which may write in turn.
    std::recursive_mutex mWriting;
    mutable std::mutex mMutex;  // never held while the suite is called
    StoreChanges mUnwritten;    // guarded by mMutex
};

}  // namespace kavio
