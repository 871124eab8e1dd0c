#include "storage/retaining_store.h"

namespace kavio {

std::vector<std::optional<StoredValue>> RetainingStore::values(std::initializer_list<std::string_view> keys) const {
    auto found = mSuite->values(keys);
    const std::lock_guard lock(mMutex);
    if (mUnwritten.empty()) return found;
    auto value = found.begin();
    for (const auto key : keys) {
        if (const auto unwritten = mUnwritten.find(key); unwritten != mUnwritten.end()) *value = unwritten->second;
        ++value;
    }
    return found;
}

bool RetainingStore::write(const StoreChanges& changes) {
    auto all = changes;
    all.merge(unwritten());
    const bool isWritten = mSuite->write(all);
    const std::lock_guard lock(mMutex);
    if (isWritten) {
        // But not what another thread has failed to write meanwhile.
        std::erase_if(mUnwritten, [&](const auto& change) {
            const auto written = all.find(change.first);
            return written != all.end() && (changes.contains(change.first) || written->second == change.second);
        });
    } else {
        for (const auto& [key, value] : changes) mUnwritten.insert_or_assign(key, value);
    }
    return isWritten;
}

StoreChanges RetainingStore::unwritten() const {
    const std::lock_guard lock(mMutex);
    return mUnwritten;
}

}  // namespace kavio
