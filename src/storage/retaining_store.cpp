#include "storage/retaining_store.h"

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
    auto all = unwritten();
    const bool isWritten = mSuite->write(all);
    for (bool goesOn = isWritten; !end(all, goesOn); goesOn = mSuite->write(all)) all = unwritten();
    return isWritten;
}

void RetainingStore::begin(const StoreChanges& changes) {
    const std::lock_guard lock(mMutex);
    ++mWriters;
    for (const auto& [key, value] : changes) mUnwritten.insert_or_assign(key, value);
}

bool RetainingStore::end(const StoreChanges& all, bool isWritten) {
    const std::lock_guard lock(mMutex);
    if (isWritten && mWriters == 1) {
        std::erase_if(mUnwritten, [&](const auto& change) {
            const auto written = all.find(change.first);
            return written != all.end() && written->second == change.second;
        });
        if (!mUnwritten.empty()) return false;
    }
    --mWriters;
    return true;
}

StoreChanges RetainingStore::unwritten() const {
    const std::lock_guard lock(mMutex);
    return mUnwritten;
}

}  // namespace kavio
