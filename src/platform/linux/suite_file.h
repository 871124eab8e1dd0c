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

/// The open file of a suite, for one thread at a time. Failures are thrown, as one of the types below or, when they may
/// pass, as `SqliteError`.
///
/// A file is set aside only when it is certain that it is damaged. It is kept as "PATH.damaged", in the place of an
/// earlier one, for a week: its values are as secret as before, and good for nothing but to find out what happened.
class SuiteFile {
public:
    /// What is at the path of the file is another one: this one was deleted or set aside.
    struct Moved {
        std::filesystem::path setAside;  // empty: by another process
    };
    /// The file cannot be used and stays as it is: a newer version of the library or another program made it, or it is
    /// damaged and cannot be moved.
    struct Unusable {};

    /// Opens the file, or makes it, but does not look into it yet. A file that was set aside long ago is removed.
    SuiteFile(const std::filesystem::path& path, std::shared_ptr<const Digest> digest);

    /// Makes sure that the values are those of the last completed write of any process.
    void refresh();
    /// The values when the file cannot be read just now are those last seen in it.
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys);
    std::vector<std::string> keys();
    /// Makes all changes or none. True when the file holds them now.
    bool write(const StoreChanges& changes);

private:
    using Values = std::map<std::string, StoredValue, std::less<>>;

    /// As `refresh`, but what is known already will do when the file cannot be read just now.
    void look();
    void prepare();
    void makeTable();
    void load();
    Values read(SqliteDatabase& database) const;
    bool holds(const StoreChanges& changes) const;
    void store(const StoreChanges& changes);
    void store(std::string_view key, const std::optional<StoredValue>& wanted);
    /// Does `work`; where it fails as it would on a damaged file, the file is looked at again, and set aside if it is.
    template <class Work>
    void judging(const Work& work);
    void setAsideIfDamaged();
    bool isDamaged() const;
    std::optional<StoredValue> known(std::string_view key) const;
    StoredValue checksum(std::string_view key, const StoredValue& value) const;
    void expectUnmoved() const;

    const std::filesystem::path mPath;
    const std::shared_ptr<const Digest> mDigest;
    SqliteDatabase mDatabase;
    bool mIsPrepared = false;
    std::optional<Values> mValues;
    std::optional<std::uint32_t> mCounter;  // at which `mValues` were read; absent: unknown
};

}  // namespace kavio
