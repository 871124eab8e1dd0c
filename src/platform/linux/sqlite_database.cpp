#include "platform/linux/sqlite_database.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kavio {
namespace {

constexpr int busyMilliseconds = 5000;
constexpr sqlite3_int64 changeCounterOffset = 24;  // of the database header, four bytes, big-endian

void check(int code) {
    if (code != SQLITE_OK) throw SqliteError(code);
}

}  // namespace

bool SqliteError::mayBeDamage() const {
    const int primary = mCode & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

bool SqliteError::isUnknownSchema() const { return (mCode & 0xFF) == SQLITE_ERROR; }

bool SqliteError::isLackOfMemory() const { return (mCode & 0xFF) == SQLITE_NOMEM || mCode == SQLITE_IOERR_NOMEM; }

bool SqliteError::isBusy() const { return (mCode & 0xFF) == SQLITE_BUSY; }

SqliteDatabase::SqliteDatabase(const char* name, int flags) {
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(name, &handle, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    mHandle.reset(handle);  // exists even after a failure
    check(code);
    execute("PRAGMA cell_size_check=ON");
}

SqliteDatabase::SqliteDatabase(const std::filesystem::path& file)
    : SqliteDatabase(file.c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW) {
    check(sqlite3_busy_timeout(mHandle.get(), busyMilliseconds));
    check(sqlite3_file_control(mHandle.get(), "main", SQLITE_FCNTL_FILE_POINTER, &mFile));
}

SqliteDatabase SqliteDatabase::copyOf(std::string_view contents) {
    SqliteDatabase copy(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY);
    auto* bytes = static_cast<unsigned char*>(sqlite3_malloc64(contents.size()));
    if (bytes == nullptr) throw SqliteError(SQLITE_NOMEM);
    std::copy(contents.begin(), contents.end(), bytes);
    // A file that keeps a log beside it says so, and in memory there is none.
    constexpr std::array<std::size_t, 2> versions{18, 19};
    for (const auto version : versions)
        if (version < contents.size() && bytes[version] == 2) bytes[version] = 1;
    const auto size = static_cast<sqlite3_int64>(contents.size());
    check(sqlite3_deserialize(copy.handle(), "main", bytes, size, size,
                              SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY));
    return copy;
}

bool SqliteDatabase::hasMemory(std::size_t bytes) {
    void* const memory = sqlite3_malloc64(bytes);
    sqlite3_free(memory);
    return memory != nullptr;
}

void SqliteDatabase::execute(const char* statements) {
    check(sqlite3_exec(mHandle.get(), statements, nullptr, nullptr, nullptr));
}

// Some failures have already done it.
void SqliteDatabase::rollBack() {
    if (sqlite3_get_autocommit(mHandle.get()) == 0) execute("ROLLBACK");
}

std::string SqliteDatabase::text(const char* query) {
    SqliteStatement statement(*this, query);
    return statement.step() ? statement.text(0) : std::string();
}

// Through SQLite's own handle: closing a descriptor of ours would drop all the process's locks on the file.
std::optional<std::uint32_t> SqliteDatabase::changeCounter() const {
    std::array<std::uint8_t, 4> bytes{};
    if (mFile->pMethods->xRead(mFile, bytes.data(), 4, changeCounterOffset) != SQLITE_OK) return std::nullopt;
    std::uint32_t counter = 0;
    for (const auto byte : bytes) counter = counter << 8 | byte;
    return counter;
}

void SqliteDatabase::disturbChangeCounter() {
    std::array<std::uint8_t, 4> bytes{};
    if (mFile->pMethods->xRead(mFile, bytes.data(), 4, changeCounterOffset) != SQLITE_OK) return;
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(~byte);
    mFile->pMethods->xWrite(mFile, bytes.data(), 4, changeCounterOffset);
}

std::string SqliteDatabase::contents() const {
    sqlite3_int64 size = 0;
    check(mFile->pMethods->xFileSize(mFile, &size));
    if (size > std::numeric_limits<int>::max()) throw SqliteError(SQLITE_TOOBIG);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    check(mFile->pMethods->xRead(mFile, bytes.data(), static_cast<int>(size), 0));
    return bytes;
}

bool SqliteDatabase::hasMoved() const {
    int moved = 0;
    check(sqlite3_file_control(mHandle.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved));
    return moved != 0;
}

void SqliteDatabase::lock() {
    rollBack();
    constexpr int pauseMilliseconds = 10;
    int code = SQLITE_BUSY;
    for (int waited = 0; code == SQLITE_BUSY && waited < busyMilliseconds; waited += pauseMilliseconds) {
        code = mFile->pMethods->xLock(mFile, SQLITE_LOCK_SHARED);
        if (code == SQLITE_OK) code = mFile->pMethods->xLock(mFile, SQLITE_LOCK_EXCLUSIVE);
        if (code != SQLITE_BUSY) break;
        unlock();  // or two that wait would block each other
        sqlite3_sleep(pauseMilliseconds);
    }
    if (code != SQLITE_OK) unlock();
    check(code);
}

void SqliteDatabase::unlock() { mFile->pMethods->xUnlock(mFile, SQLITE_LOCK_NONE); }

SqliteTransaction::SqliteTransaction(SqliteDatabase& database, const char* begin) : mDatabase(database) {
    mDatabase.rollBack();  // what an earlier one could not roll back
    mDatabase.execute(begin);
}

SqliteTransaction::~SqliteTransaction() {
    try {
        mDatabase.rollBack();
    } catch (const SqliteError&) {  // NOLINT(bugprone-empty-catch): the next transaction, or who reads next, does it
    }
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr));
    mStatement.reset(statement);
}

void SqliteStatement::bind(int index, std::string_view text) {
    check(sqlite3_bind_text64(mStatement.get(), index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void SqliteStatement::bind(int index, const StoredValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return bind(index, std::string_view(*text));
    if (const auto* date = std::get_if<Date>(&value)) {
        return check(sqlite3_bind_double(mStatement.get(), index, date->time_since_epoch().count()));
    }
    const auto& bytes = std::get<Bytes>(value);
    if (bytes.empty()) return check(sqlite3_bind_zeroblob(mStatement.get(), index, 0));  // a null pointer would be NULL
    check(sqlite3_bind_blob64(mStatement.get(), index, bytes.data(), bytes.size(), SQLITE_STATIC));
}

bool SqliteStatement::step() {
    const int code = sqlite3_step(mStatement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) throw SqliteError(code);
    return code == SQLITE_ROW;
}

std::string SqliteStatement::text(int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(mStatement.get(), column));
    if (text == nullptr && sqlite3_errcode(sqlite3_db_handle(mStatement.get())) == SQLITE_NOMEM) {
        throw SqliteError(SQLITE_NOMEM);
    }
    if (text == nullptr) return {};
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(mStatement.get(), column))};
}

std::optional<StoredValue> SqliteStatement::value(int column) {
    switch (sqlite3_column_type(mStatement.get(), column)) {
        case SQLITE_TEXT:
            return text(column);
        case SQLITE_FLOAT:
            return Date(std::chrono::duration<double>(sqlite3_column_double(mStatement.get(), column)));
        case SQLITE_BLOB: {
            const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(mStatement.get(), column));
            return Bytes(bytes, bytes + sqlite3_column_bytes(mStatement.get(), column));
        }
        default:
            return std::nullopt;
    }
}

}  // namespace kavio
