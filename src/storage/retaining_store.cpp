#include "storage/retaining_store.h"

#include <utility>

namespace kavio {

std::vector<std::optional<StoredValue>> RetainingStore::values(std::initializer_list<std::string_view> keys) const {
    auto kept = unwritten();
    auto found = mSuite->values(keys);
    for (auto now = unwritten(); now != kept; now = unwritten()) {  // of one moment, not of two
        kept = std::move(now);
        found = mSuite->values(keys);
    }
    auto value = found.begin();
    for (const auto key : keys) {
        if (const auto unwritten = kept.find(key); unwritten != kept.end()) *value = unwritten->second;
        ++value;
    }
    return found;
}

bool RetainingStore::write(const StoreChanges& changes) {
    begin(changes);
    bool isWritten = mSuite->write(unwritten());
    while (!end(isWritten)) isWritten = mSuite->write(unwritten());
    return isWritten;
}

void RetainingStore::begin(const StoreChanges& changes) {
    const std::lock_guard lock(mMutex);
    mHaveOverlapped |= mWriters > 0;
    ++mWriters;
    for (const auto& [key, value] : changes) mUnwritten.insert_or_assign(key, value);
}

bool RetainingStore::end(bool isWritten) {
    const std::lock_guard lock(mMutex);
    if (mWriters == 1) {
        if (std::exchange(mHaveOverlapped, false)) return false;
        if (isWritten) mUnwritten.clear();
    }
    --mWriters;
    return true;
}

StoreChanges RetainingStore::unwritten() const {
    const std::lock_guard lock(mMutex);
    return mUnwritten;
}

}  // namespace kavio
