#include "platform/linux/suite_file.h"

#include "platform/linux/private_files.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

namespace kavio {
namespace {

constexpr std::uint64_t layout = 1;  // of the table; files from before layouts were numbered say 0
constexpr std::chrono::days lifeOfDamagedFile{7};
constexpr std::size_t memoryToRead = 1'000'000;  // more than a small file takes

std::filesystem::path damagedPath(const std::filesystem::path& path) { return path.string() + ".damaged"; }

std::filesystem::path openable(const std::filesystem::path& path) {
    removeIfOlder(damagedPath(path), lifeOfDamagedFile);
    makePrivateFile(path);
    return path;
}

/// The file's layout. A newer one is not ours to read.
std::uint64_t knownLayout(SqliteDatabase& database) {
    const auto found = std::stoull(database.text("PRAGMA user_version"));
    if (found > layout) throw SuiteFile::Unusable();
    return found;
}

/// Our table only lists columns. What somebody has added that computes something might do so for ever: a view, a
/// trigger and a virtual table have no page of their own, and a check, a generated column and an index of expressions
/// have further parentheses.
void expectNothingComputed(SqliteDatabase& database) {
    const auto computing =
        database.text("SELECT count(*) FROM sqlite_schema WHERE coalesce(rootpage, 0) = 0 OR sql LIKE '%(%(%'");
    if (computing != "0") throw SqliteError(SQLITE_CORRUPT);
}

/// The rows of a file that we may read.
SqliteStatement rowsOf(SqliteDatabase& database) {
    const auto found = knownLayout(database);
    try {
        SqliteStatement rows(database, "SELECT key, value, checksum FROM entry");
        expectNothingComputed(database);
        return rows;
    } catch (const SqliteError& error) {
        if (!error.isUnknownSchema()) throw;
        if (found == layout) throw SqliteError(SQLITE_CORRUPT);  // the number is ours, but the table is lost
        throw SuiteFile::Unusable();
    }
}

}  // namespace

SuiteFile::SuiteFile(const std::filesystem::path& path, std::shared_ptr<const Digest> digest)
    : mPath(path), mDigest(std::move(digest)), mDatabase(openable(path)) {}

// The counter is read without a lock. That is enough, because a commit changes it before it completes: as long as it is
// the remembered one, no later write has completed. Any other value merely leads to a read transaction, which waits for
// a commit under way and rolls back one that a crash cut off. The counter remembered is the one read inside such a
// transaction or that of an own commit, never one that could still be undone.
void SuiteFile::refresh() {
    if (mIsPrepared && mCounter && mDatabase.changeCounter() == mCounter) return;
    judging([this] {
        if (!mIsPrepared) prepare();
        load();
    });
}

std::vector<std::optional<StoredValue>> SuiteFile::values(std::initializer_list<std::string_view> keys) {
    look();
    std::vector<std::optional<StoredValue>> found;
    found.reserve(keys.size());
    for (const auto key : keys) found.push_back(known(key));
    return found;
}

std::vector<std::string> SuiteFile::keys() {
    look();
    std::vector<std::string> found;
    for (const auto& [key, value] : *mValues) found.push_back(key);
    return found;
}

void SuiteFile::look() {
    try {
        refresh();
    } catch (const SqliteError&) {
        if (!mValues) throw;
    }
}

bool SuiteFile::write(const StoreChanges& changes) {
    if (mDatabase.isReadOnly()) mIsPrepared = false;
    refresh();
    if (holds(changes)) return true;
    try {
        std::optional<std::uint32_t> counter;
        judging([&] { counter = store(changes); });
        for (const auto& [key, value] : changes) {
            if (value) {
                mValues->insert_or_assign(key, *value);
            } else {
                mValues->erase(key);
            }
        }
        mCounter = counter;  // last: without memory, the values are not the file's
        return true;
    } catch (const SqliteError&) {
        // A commit that failed at its very end, while making the removal of its journal durable, may still stand.
        refresh();
        return holds(changes);
    }
}

bool SuiteFile::holds(const StoreChanges& changes) const {
    return std::all_of(changes.begin(), changes.end(),
                       [this](const auto& change) { return known(change.first) == change.second; });
}

// EXTRA, because if a power cut undoes the removal of the journal, that journal would undo the write too.
void SuiteFile::prepare() {
    // SQLite opens a file for reading where it cannot for writing, even if that is only for want of a descriptor.
    if (mDatabase.isReadOnly()) mDatabase = SqliteDatabase(openable(mPath));
    const bool isDiskReadOnly = mDatabase.isReadOnly();  // nothing in the file has been read yet
    const bool isEmpty = mDatabase.text("PRAGMA page_count") == "0";
    if (!isEmpty) rowsOf(mDatabase);  // before anything changes a file that may not be ours
    mDatabase.execute("PRAGMA synchronous=EXTRA; PRAGMA secure_delete=ON");
    // Any other mode would not change the counter with each commit.
    if (mDatabase.text("PRAGMA journal_mode=DELETE") != "delete") throw SqliteError(SQLITE_BUSY);
    if (isEmpty) makeTable();
    // If the header names a newer format, SQLite reads but never writes.
    if (mDatabase.isReadOnly() && !isDiskReadOnly) throw Unusable();
    mIsPrepared = true;
}

void SuiteFile::makeTable() {
    SqliteTransaction transaction(mDatabase, "BEGIN IMMEDIATE");
    if (knownLayout(mDatabase) == layout) return;  // another process was quicker
    mDatabase.execute(
        "CREATE TABLE IF NOT EXISTS entry"
        "(key TEXT PRIMARY KEY NOT NULL, value ANY NOT NULL, checksum BLOB NOT NULL) STRICT, WITHOUT ROWID");
    mDatabase.execute(("PRAGMA user_version=" + std::to_string(layout)).c_str());
    transaction.commit();
}

void SuiteFile::load() {
    const SqliteTransaction transaction(mDatabase, "BEGIN");
    auto values = read(mDatabase);
    expectUnmoved();
    mCounter = mDatabase.changeCounter();
    mValues = std::move(values);
}

SuiteFile::Values SuiteFile::read(SqliteDatabase& database) const {
    auto rows = rowsOf(database);
    if (database.text("PRAGMA integrity_check(1)") != "ok") throw SqliteError(SQLITE_CORRUPT);
    Values values;
    while (rows.step()) {
        auto key = rows.text(0);
        auto value = rows.value(1);
        // SQLite checks the structure of its pages, not their contents.
        if (!value || rows.value(2) != checksum(key, *value)) throw SqliteError(SQLITE_CORRUPT);
        values.emplace(std::move(key), std::move(*value));
    }
    return values;
}

/// The file's counter afterwards, or nothing if another process has changed the file since its values were read.
std::optional<std::uint32_t> SuiteFile::store(const StoreChanges& changes) {
    SqliteTransaction transaction(mDatabase, "BEGIN IMMEDIATE");
    expectUnmoved();
    knownLayout(mDatabase);  // a newer version may have taken over since
    const bool isCurrent = mCounter && mDatabase.changeCounter() == mCounter;
    for (const auto& [key, wanted] : changes) store(key, wanted);
    const auto counter = std::exchange(mCounter, std::nullopt);  // the next look tells whether this has succeeded
    transaction.commit();
    return isCurrent ? std::optional(*counter + 1) : std::nullopt;  // as every commit raises it that changes something
}

void SuiteFile::store(std::string_view key, const std::optional<StoredValue>& wanted) {
    SqliteStatement change(mDatabase, wanted ? "INSERT OR REPLACE INTO entry(key, value, checksum) VALUES(?1, ?2, ?3)"
                                             : "DELETE FROM entry WHERE key = ?1");
    change.bind(1, key);
    const auto sum = wanted ? checksum(key, *wanted) : StoredValue();
    if (wanted) {
        change.bind(2, *wanted);
        change.bind(3, sum);
    }
    change.step();
}

std::optional<StoredValue> SuiteFile::known(std::string_view key) const {
    const auto found = mValues->find(key);
    if (found == mValues->end()) return std::nullopt;
    return found->second;
}

StoredValue SuiteFile::checksum(std::string_view key, const StoredValue& value) const {
    auto covered = std::to_string(value.index()) + ':' + std::to_string(key.size()) + ':';
    covered += key;
    if (const auto* text = std::get_if<std::string>(&value)) covered += *text;
    if (const auto* bytes = std::get_if<Bytes>(&value)) covered.append(bytes->begin(), bytes->end());
    if (const auto* date = std::get_if<Date>(&value)) {
        covered += std::to_string(std::bit_cast<std::uint64_t>(date->time_since_epoch().count()));
    }
    const auto digest = mDigest->sha1(covered);
    return Bytes(digest.begin(), digest.end());
}

// Asked with SQLite's lock held, so that the answer stays true: setting a file aside takes the exclusive lock.
void SuiteFile::expectUnmoved() const {
    if (mDatabase.hasMoved()) throw Moved();
}

template <class Work>
void SuiteFile::judging(const Work& work) {
    try {
        work();
    } catch (const SqliteError& error) {
        if (error.isLackOfMemory()) {
            try {
                if (SqliteDatabase::hasMemory(memoryToRead)) setAsideIfDamaged();
            } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): as it said
            }
        }
        if (!error.mayBeDamage()) throw;
        setAsideIfDamaged();
        // What looked like damage is gone, but may still be in the connection's cache.
        mIsPrepared = false;
        mDatabase = SqliteDatabase(openable(mPath));
        throw SqliteError(SQLITE_IOERR);
    }
}

void SuiteFile::setAsideIfDamaged() {
    const SqliteLock lock(mDatabase);
    expectUnmoved();
    if (!isDamaged()) return;
    auto target = damagedPath(mPath);
    std::error_code failure;
    std::filesystem::rename(mPath, target, failure);
    if (failure) throw Unusable();
    mDatabase.disturbChangeCounter();
    throw Moved{std::move(target)};
}

// A disk that cannot be read for a moment, and lack of memory, look like damage too. So a copy in memory is judged,
// which no disk can garble, and which is made while no other process can write.
bool SuiteFile::isDamaged() const {
    // The next look into the file undoes what a crash has left unfinished.
    for (const auto* const log : {"-journal", "-wal"}) {
        std::error_code none;
        if (std::filesystem::file_size(mPath.string() + log, none) > 0 && !none) throw SqliteError(SQLITE_IOERR);
    }
    const auto contents = mDatabase.contents();
    const auto verdict = contents.empty() ? Verdict::SOUND : judge(contents);
    if (verdict != Verdict::OUT_OF_MEMORY) return verdict == Verdict::DAMAGED;
    // SQLite says so of some forged schemas, too. It is damage if it says so where there is memory.
    if (!SqliteDatabase::hasMemory(memoryToRead + 4 * contents.size())) throw std::bad_alloc();
    return judge(contents) != Verdict::SOUND;
}

SuiteFile::Verdict SuiteFile::judge(std::string_view contents) const {
    try {
        auto copy = SqliteDatabase::copyOf(contents);
        const SqliteTransaction transaction(copy, "BEGIN");
        read(copy);
        return Verdict::SOUND;
    } catch (const SqliteError& error) {
        if (error.mayBeDamage()) return Verdict::DAMAGED;
        if (error.isLackOfMemory()) return Verdict::OUT_OF_MEMORY;
        throw;
    }
}

}  // namespace kavio
