#include "storage/retaining_store.h"

namespace kavio {

std::vector<std::optional<StoredValue>> RetainingStore::values(std::initializer_list<std::string_view> keys) const {
    const auto kept = unwritten();  // first: what is written meanwhile is then found in the suite
    auto found = mSuite->values(keys);
    auto value = found.begin();
    for (const auto key : keys) {
        if (const auto unwritten = kept.find(key); unwritten != kept.end()) *value = unwritten->second;
        ++value;
    }
    return found;
}

bool RetainingStore::write(const StoreChanges& changes) {
    const std::lock_guard oneAtATime(mWriting);
    keep(changes);
    const auto all = unwritten();
    if (!mSuite->write(all)) return false;
    const std::lock_guard lock(mMutex);
    // But not what the host, told of a damaged file meanwhile, has failed to write.
    std::erase_if(mUnwritten, [&](const auto& change) {
        const auto written = all.find(change.first);
        return written != all.end() && written->second == change.second;
    });
    return true;
}

void RetainingStore::keep(const StoreChanges& changes) {
    const std::lock_guard lock(mMutex);
    for (const auto& [key, value] : changes) mUnwritten.insert_or_assign(key, value);
}

StoreChanges RetainingStore::unwritten() const {
    const std::lock_guard lock(mMutex);
    return mUnwritten;
}

}  // namespace kavio
