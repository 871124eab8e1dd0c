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

/// The open file of a suite, for one thread at a time. Failures are thrown as one of the types below or, if they may
/// pass, as `SqliteError`.
///
/// A file is set aside only when it is certainly damaged. It is kept as "PATH.damaged" for a week, replacing an earlier
/// one: its values are as secret as before, and good only for finding out what happened.
class SuiteFile {
public:
    /// There is another file at the path: this one was deleted or set aside.
    struct Moved {
        std::filesystem::path setAside;  // empty: by another process
    };
    /// The file cannot be used and stays as it is: it was made by a newer version of the library or another program, or
    /// it is damaged and cannot be moved.
    struct Unusable {};

    /// Opens or makes the file, but does not look into it yet. A file that was set aside long ago is removed.
    SuiteFile(const std::filesystem::path& path, std::shared_ptr<const Digest> digest);

    /// Makes sure that the values are those of the last completed write of any process.
    void refresh();
    /// If the file cannot be read just now, these are the values last seen in it.
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys);
    std::vector<std::string> keys();
    /// Makes all changes or none. True when the file holds them now.
    bool write(const StoreChanges& changes);

private:
    using Values = std::map<std::string, StoredValue, std::less<>>;

    /// Like `refresh`, but settles for what is already known if the file cannot be read just now.
    void look();
    void prepare();
    void makeTable();
    void load();
    Values read(SqliteDatabase& database) const;
    bool holds(const StoreChanges& changes) const;
    std::optional<std::uint32_t> store(const StoreChanges& changes);
    void store(std::string_view key, const std::optional<StoredValue>& wanted);
    /// Does `work`. If that fails as it would on a damaged file, checks whether the file is damaged and, if so, sets
    /// it aside.
    template <class Work>
    void judging(const Work& work);
    void setAsideIfDamaged();
    bool isDamaged() const;
    enum class Verdict { SOUND, DAMAGED, OUT_OF_MEMORY };
    Verdict judge(std::string_view contents) const;
    std::optional<StoredValue> known(std::string_view key) const;
    StoredValue checksum(std::string_view key, const StoredValue& value) const;
    void expectUnmoved() const;

    const std::filesystem::path mPath;
    const std::shared_ptr<const Digest> mDigest;
    SqliteDatabase mDatabase;
    bool mIsPrepared = false;
    std::optional<Values> mValues;
    std::optional<std::uint32_t> mCounter;  // of the file that has `mValues`; absent if unknown
};

}  // namespace kavio
