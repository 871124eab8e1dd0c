#pragma once

#include "platform/linux/sqlite_database.h"

#include <kavio/platform/device.h>
#include <kavio/platform/key_value_store.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// The open file of a suite, for one thread at a time. Failures are thrown, as `SqliteError` or `Moved`.
class SuiteFile {
public:
    /// The file was set aside or deleted, by another process: what is at its path is another one.
    struct Moved {};

    /// Opens the file, or makes it, but does not look into it yet.
    SuiteFile(const std::filesystem::path& path, std::shared_ptr<const Digest> digest);

    /// Makes sure that the values are those of the last completed write of any process.
    void refresh();
    /// The values when the file cannot be read just now are those last seen in it.
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys);
    /// Makes all changes or none. True when the file holds them now.
    bool write(const StoreChanges& changes);

    /// Moves the file, which was found damaged, out of the way and gives its new path. `*this` is of no use afterwards.
    std::filesystem::path setAside();

private:
    void prepare();
    bool isFresh();
    void load();
    bool holds(const StoreChanges& changes) const;
    void store(const StoreChanges& changes);
    void store(std::string_view key, const std::optional<StoredValue>& wanted);
    std::optional<StoredValue> known(std::string_view key) const;
    StoredValue checksum(std::string_view key, const StoredValue& value) const;
    void expectUnmoved() const;

    const std::filesystem::path mPath;
    const std::shared_ptr<const Digest> mDigest;
    SqliteDatabase mDatabase;
    bool mIsPrepared = false;
    std::optional<std::map<std::string, StoredValue, std::less<>>> mValues;
    std::optional<std::uint32_t> mCounter;  // at which `mValues` were read; absent: unknown
};

}  // namespace kavio
