#pragma once

#include <kavio/platform/key_value_store.h>

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kavio {

class SqliteError : public std::runtime_error {
public:
    explicit SqliteError(int code) : std::runtime_error(sqlite3_errstr(code)), mCode(code) {}
    /// Whether the file itself is to blame. Our statements are fixed and right, so that a plain SQLITE_ERROR means a
    /// schema which is not ours.
    bool isDamage() const;
    /// Whether another process held the file for too long.
    bool isBusy() const;

private:
    int mCode;
};

/// One connection, for one thread at a time. Every failure is thrown as `SqliteError`.
class SqliteDatabase {
public:
    /// Opens an existing file without reading it, read-only where nothing else is allowed.
    explicit SqliteDatabase(const std::filesystem::path& file);

    void execute(const char* statements);
    /// The first value of the first row, as text.
    std::string text(const char* query);

    /// The file's change counter as it stands in the file now, without any lock; absent in a file too short to have
    /// one.
    std::optional<std::uint32_t> changeCounter() const;
    /// Makes other processes that have the file open see that it has changed, as far as it can still be written. Needs
    /// the exclusive lock.
    void disturbChangeCounter();
    std::int64_t fileSize() const;
    bool isReadOnly() const { return sqlite3_db_readonly(mHandle.get(), "main") == 1; }
    /// Whether the file is no longer the one at its path.
    bool hasMoved() const;
    /// Takes SQLite's exclusive lock on the file until it is closed; a transaction cannot be had on a damaged one.
    void lockForGood();

    sqlite3* handle() const { return mHandle.get(); }

private:
    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    };
    std::unique_ptr<sqlite3, Close> mHandle;
    sqlite3_file* mFile = nullptr;
};

/// A transaction that is rolled back unless it was committed.
class SqliteTransaction {
public:
    SqliteTransaction(SqliteDatabase& database, const char* begin) : mDatabase(database) { mDatabase.execute(begin); }
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    void commit() { mDatabase.execute("COMMIT"); }

private:
    SqliteDatabase& mDatabase;
};

class SqliteStatement {
public:
    SqliteStatement(SqliteDatabase& database, std::string_view sql);

    /// Texts and bytes are to outlive the statement's steps.
    void bind(int index, std::string_view text);
    void bind(int index, const StoredValue& value);
    /// Whether there is a row.
    bool step();
    std::string text(int column);
    /// Absent for a number without fraction and for NULL, which no stored value is.
    std::optional<StoredValue> value(int column);

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> mStatement;
};

}  // namespace kavio
