#pragma once

#include <kavio/platform/key_value_store.h>

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// Takes no memory, which may be what is missing.
class SqliteError : public std::exception {
public:
    explicit SqliteError(int code) noexcept : mCode(code) {}
    const char* what() const noexcept override { return sqlite3_errstr(mCode); }
    /// Whether the file may be to blame. The cause may also be a disk that could not be read, or lack of memory.
    bool mayBeDamage() const;
    /// Whether a table or column that a statement names is missing. Nothing else can be wrong with our statements,
    /// which are fixed.
    bool isUnknownSchema() const;
    bool isLackOfMemory() const;
    /// Whether another process held the file for too long.
    bool isBusy() const;

private:
    int mCode;
};

/// One connection, for one thread at a time. Every failure is thrown as `SqliteError`.
class SqliteDatabase {
public:
    /// Opens an existing file without reading it; read-only if nothing else is allowed.
    explicit SqliteDatabase(const std::filesystem::path& file);
    /// Opens a copy of a file in memory, read-only.
    static SqliteDatabase copyOf(std::string_view contents);
    /// Whether SQLite can have so much more memory.
    static bool hasMemory(std::size_t bytes);

    void execute(const char* statements);
    /// Ends an open transaction; without memory, even that may fail.
    void rollBack();
    /// The first value of the first row, as text.
    std::string text(const char* query);

    /// The change counter that is in the file now, read without a lock; absent if the file is too short to have one.
    std::optional<std::uint32_t> changeCounter() const;
    /// Lets other processes that have the file open see that it has changed, if it can still be written. Needs the
    /// exclusive lock.
    void disturbChangeCounter();
    /// The bytes of the file, unchecked by SQLite. Needs the exclusive lock.
    std::string contents() const;
    bool isReadOnly() const { return sqlite3_db_readonly(mHandle.get(), "main") == 1; }
    /// Whether the file is no longer the one at its path.
    bool hasMoved() const;
    /// SQLite's exclusive lock on the file, outside any transaction: a damaged file allows no transactions.
    void lock();
    void unlock();

    sqlite3* handle() const { return mHandle.get(); }

private:
    SqliteDatabase(const char* name, int flags);

    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    };
    std::unique_ptr<sqlite3, Close> mHandle;
    sqlite3_file* mFile = nullptr;
};

/// SQLite's exclusive lock for as long as this lives.
class SqliteLock {
public:
    explicit SqliteLock(SqliteDatabase& database) : mDatabase(database) { mDatabase.lock(); }
    ~SqliteLock() { mDatabase.unlock(); }
    SqliteLock(const SqliteLock&) = delete;
    SqliteLock& operator=(const SqliteLock&) = delete;

private:
    SqliteDatabase& mDatabase;
};

/// A transaction that is rolled back unless it is committed.
class SqliteTransaction {
public:
    SqliteTransaction(SqliteDatabase& database, const char* begin);
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

    /// Texts and bytes must outlive the statement's steps.
    void bind(int index, std::string_view text);
    void bind(int index, const StoredValue& value);
    /// Whether there is a row.
    bool step();
    std::string text(int column);
    /// Absent for an integer and for NULL, which are never stored.
    std::optional<StoredValue> value(int column);

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> mStatement;
};

}  // namespace kavio
