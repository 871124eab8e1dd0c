#pragma once

#include <kavio/platform/key_value_store.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// A suite whose changes always count in this process: what cannot be written is kept in memory, and is written with
/// the next change that can be. So a full disk neither signs a person out nor leaves the key or token of another run in
/// use.
class RetainingStore final : public KeyValueStore {
public:
    explicit RetainingStore(std::shared_ptr<KeyValueStore> suite) : mSuite(std::move(suite)) {}

    std::optional<StoredValue> value(std::string_view key) const override { return values({key}).front(); }
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys) const override;
    std::vector<std::string> keys() const override;
    /// False when the changes are not in the suite, and end with this process unless a later write takes them along.
    /// False as well, and without any effect, when one is a date that is no number.
    bool write(const StoreChanges& changes) override;
    bool isKept() const override { return unwritten().empty() && mSuite->isKept(); }

private:
    void begin(const StoreChanges& changes);
    /// Whether the writer is done. Of several at once nobody knows whose values the suite has in the end, for each took
    /// along what the others had not written yet: the last one writes once more.
    bool end(bool isWritten);
    bool writeKept();
    StoreChanges unwritten() const;

    const std::shared_ptr<KeyValueStore> mSuite;
    mutable std::mutex mMutex;  // never held while the suite is called, which may report to the host
    // Guarded by mMutex:
    StoreChanges mUnwritten;
    int mWriters = 0;  // under way
    bool mHaveOverlapped = false;
};

}  // namespace kavio
