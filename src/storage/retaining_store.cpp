#include "storage/retaining_store.h"

namespace kavio {

std::optional<StoredValue> RetainingStore::value(std::string_view key) const {
    {
        const std::lock_guard lock(mMutex);
        if (const auto found = mUnwritten.find(key); found != mUnwritten.end()) return found->second;
    }
    return mSuite->value(key);
}

bool RetainingStore::write(const StoreChanges& changes) {
    auto all = changes;
    all.merge(unwritten());
    const bool isWritten = mSuite->write(all);
    const std::lock_guard lock(mMutex);
    if (isWritten) {
        std::erase_if(mUnwritten, [&](const auto& change) { return all.find(change.first) != all.end(); });
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
