#include "platform/linux/suite_file.h"

#include "platform/linux/private_files.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace kavio {
namespace {

std::filesystem::path openable(const std::filesystem::path& path) {
    makePrivateFile(path);
    return path;
}

}  // namespace

SuiteFile::SuiteFile(const std::filesystem::path& path, std::shared_ptr<const Digest> digest)
    : mPath(path), mDigest(std::move(digest)), mDatabase(openable(path)) {}

// The counter is read without a lock. That is enough, because a commit changes it before it completes: as long as it is
// the remembered one no later write has completed. Any other value only leads to a read transaction, which waits for a
// commit under way and rolls back one that a crash has cut off. The counter that is remembered is the one read inside
// such a transaction, never one that could still be undone.
void SuiteFile::refresh() {
    if (mCounter && mDatabase.changeCounter() == mCounter) return;
    if (!mIsPrepared) prepare();
    load();
}

std::vector<std::optional<StoredValue>> SuiteFile::values(std::initializer_list<std::string_view> keys) {
    try {
        refresh();
    } catch (const SqliteError& error) {
        if (error.isDamage() || !mValues) throw;
    }
    std::vector<std::optional<StoredValue>> found;
    found.reserve(keys.size());
    for (const auto key : keys) found.push_back(known(key));
    return found;
}

bool SuiteFile::write(const StoreChanges& changes) {
    refresh();
    if (holds(changes)) return true;
    try {
        store(changes);
        return true;
    } catch (const SqliteError& error) {
        if (error.isDamage()) throw;
    }
    // A commit that failed at its very end, in making the removal of its journal durable, may stand nevertheless.
    refresh();
    return holds(changes);
}

bool SuiteFile::holds(const StoreChanges& changes) const {
    return std::all_of(changes.begin(), changes.end(),
                       [this](const auto& change) { return known(change.first) == change.second; });
}

// EXTRA, because a journal whose removal a power cut undoes would undo the write too.
void SuiteFile::prepare() {
    const bool isDiskReadOnly = mDatabase.isReadOnly();  // nothing of the file has been read yet
    mDatabase.execute("PRAGMA synchronous=EXTRA; PRAGMA secure_delete=ON; PRAGMA cell_size_check=ON");
    // Another mode would not change the counter with each commit.
    if (mDatabase.text("PRAGMA journal_mode=DELETE") != "delete") throw SqliteError(SQLITE_BUSY);
    if (isFresh()) {
        mDatabase.execute(
            "CREATE TABLE IF NOT EXISTS entry"
            "(key TEXT PRIMARY KEY NOT NULL, value ANY NOT NULL, checksum BLOB NOT NULL) STRICT, WITHOUT ROWID");
    }
    // A header that names a newer format makes SQLite read but never write.
    if (mDatabase.isReadOnly() && !isDiskReadOnly) throw SqliteError(SQLITE_CORRUPT);
    mIsPrepared = true;
}

/// Only an empty file is a fresh suite: one that has lost its table, or nearly all of its bytes, is damaged.
/// (SQLite takes a file of a single byte for an empty one.)
bool SuiteFile::isFresh() {
    const SqliteTransaction transaction(mDatabase, "BEGIN");
    if (mDatabase.text("PRAGMA page_count") != "0") return false;
    if (mDatabase.fileSize() != 0) throw SqliteError(SQLITE_CORRUPT);
    return true;
}

void SuiteFile::load() {
    const SqliteTransaction transaction(mDatabase, "BEGIN");
    if (mDatabase.text("PRAGMA quick_check(1)") != "ok") throw SqliteError(SQLITE_CORRUPT);

    std::map<std::string, StoredValue, std::less<>> values;
    SqliteStatement rows(mDatabase, "SELECT key, value, checksum FROM entry");
    while (rows.step()) {
        auto key = rows.text(0);
        auto value = rows.value(1);
        // SQLite checks the structure of its pages, not what they hold.
        if (!value || rows.value(2) != checksum(key, *value)) throw SqliteError(SQLITE_CORRUPT);
        values.emplace(std::move(key), std::move(*value));
    }
    expectUnmoved();
    mCounter = mDatabase.changeCounter();
    mValues = std::move(values);
}

void SuiteFile::store(const StoreChanges& changes) {
    SqliteTransaction transaction(mDatabase, "BEGIN IMMEDIATE");
    expectUnmoved();
    for (const auto& [key, wanted] : changes) store(key, wanted);
    mCounter.reset();  // whether this succeeds or not: the next look into the file tells
    transaction.commit();
}

void SuiteFile::store(std::string_view key, const std::optional<StoredValue>& wanted) {
    SqliteStatement change(
        mDatabase, wanted ? "INSERT OR REPLACE INTO entry VALUES(?1, ?2, ?3)" : "DELETE FROM entry WHERE key = ?1");
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

// Asked with SQLite's lock held, so that the answer stays true: who sets a file aside holds the exclusive lock.
void SuiteFile::expectUnmoved() const {
    if (mDatabase.hasMoved()) throw Moved();
}

std::filesystem::path SuiteFile::setAside() {
    mDatabase.lockForGood();
    expectUnmoved();
    auto target = unusedDamagedPath(mPath);
    // The journal first: left behind alone, it would be rolled back into the file that is made next.
    moveIfThere(mPath.string() + "-journal", target.string() + "-journal");
    std::filesystem::rename(mPath, target);
    mDatabase.disturbChangeCounter();
    return target;
}

}  // namespace kavio
