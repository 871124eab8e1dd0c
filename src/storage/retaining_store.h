#pragma once

#include <kavio/platform/key_value_store.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// A suite whose changes always count in this process: what cannot be written is kept in memory and written along with
/// the next change that can be. So a full disk neither signs a person out nor leaves another run's key or token in use.
class RetainingStore final : public KeyValueStore {
public:
    explicit RetainingStore(std::shared_ptr<KeyValueStore> suite) : mSuite(std::move(suite)) {}

    std::optional<StoredValue> value(std::string_view key) const override { return values({key}).front(); }
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys) const override;
    std::vector<std::string> keys() const override;
    /// False when the changes are not in the suite; they end with this process unless a later write takes them along.
    /// Also false, and without any effect, when one of them is a date that is not a number.
    bool write(const StoreChanges& changes) override;
    bool isKept() const override { return unwritten().empty() && mSuite->isKept(); }

private:
    void begin(const StoreChanges& changes);
    /// Whether the writer is done. If there are several at once, nobody knows whose values the suite ends up with,
    /// since each takes along what the others have not written yet; so the last one writes once more.
    bool end(bool isWritten);
    bool writeKept();
    StoreChanges unwritten() const;

    const std::shared_ptr<KeyValueStore> mSuite;
    mutable std::mutex mMutex;  // never held while the suite is called, which may report to the host
    // Guarded by mMutex:
    StoreChanges mUnwritten;
    int mWriters = 0;  // now writing
    bool mHaveOverlapped = false;
};

}  // namespace kavio
