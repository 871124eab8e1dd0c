#include "storage/retaining_store.h"

#include "util/contained.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace kavio {
namespace {

bool isNoDate(const std::optional<StoredValue>& value) {
    const auto* date = value ? std::get_if<Date>(&*value) : nullptr;
    return date != nullptr && std::isnan(date->time_since_epoch().count());
}

}  // namespace

std::vector<std::optional<StoredValue>> RetainingStore::values(std::initializer_list<std::string_view> keys) const {
    auto kept = unwritten();
    auto found = mSuite->values(keys);
    for (auto now = unwritten(); now != kept; now = unwritten()) {  // all of the same moment
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

std::vector<std::string> RetainingStore::keys() const {
    const auto kept = unwritten();
    std::set<std::string> found;
    for (auto& key : mSuite->keys()) found.insert(std::move(key));
    for (const auto& [key, value] : kept) {
        if (value) {
            found.insert(key);
        } else {
            found.erase(key);
        }
    }
    return {found.begin(), found.end()};
}

bool RetainingStore::write(const StoreChanges& changes) {
    // A suite may refuse a date that is not a number. If it were kept, it would block all other changes.
    if (std::any_of(changes.begin(), changes.end(), [](const auto& change) { return isNoDate(change.second); }))
        return false;
    begin(changes);
    bool isWritten = false;
    do isWritten = writeKept();
    while (!end(isWritten));
    return isWritten;
}

void RetainingStore::begin(const StoreChanges& changes) {
    auto merged = changes;  // all of it or, without memory, nothing
    const std::lock_guard lock(mMutex);
    merged.merge(mUnwritten);
    mUnwritten.swap(merged);
    mHaveOverlapped |= mWriters > 0;
    ++mWriters;
}

// Without memory nothing is written, but all is kept.
bool RetainingStore::writeKept() {
    bool isWritten = false;
    contained([&] { isWritten = mSuite->write(unwritten()); });
    return isWritten;
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
