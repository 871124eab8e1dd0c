#include "platform/linux/sqlite_stores.h"

#include "platform/linux/openssl.h"
#include "platform/linux/suite_file.h"
#include "platform/other_process.h"

#include <kavio/platform/key_value_store.h>
#include <kavio/testing/temporary_folder.h>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A store folder with one suite, and the reports about its file.
struct StoreFolder {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "deep/store";
    const std::filesystem::path file = path / "suite.suite.sqlite";
    const std::filesystem::path damagedFile = path / "suite.suite.sqlite.damaged";
    std::vector<std::filesystem::path> setAside;  // an empty path if the file cannot be used

    /// Opens the file again if nobody holds the suite any more.
    std::shared_ptr<KeyValueStore> suite() {
        const auto note = [this](const auto& damaged, const auto& moved) {
            if (damaged == file) setAside.push_back(moved);
        };
        return makeSqliteStores(path, makeOpensslDigest(), note)->suite("suite");
    }
};

TEST(SqliteStores, AreTheirUsersAloneWhateverTheUmask) {
    for (const mode_t mask : {0000, 0777}) {
        StoreFolder store;
        const auto former = ::umask(mask);
        EXPECT_TRUE(store.suite());
        ::umask(former);
        EXPECT_EQ(std::filesystem::status(store.path).permissions(), std::filesystem::perms(0700));
        EXPECT_EQ(std::filesystem::status(store.file).permissions(), std::filesystem::perms(0600));
        ::chmod(store.file.c_str(), 0644);
        EXPECT_TRUE(store.suite());
        EXPECT_EQ(std::filesystem::status(store.file).permissions(), std::filesystem::perms(0600))
            << "of a file that others could read until now";
    }
}

TEST(SqliteStores, LiveInMemoryWhereNothingCanBeWritten) {
    std::vector<std::string> reports;
    const auto note = [&](const auto& file, const auto& setAside) {
        reports.push_back(file.string() + "|" + setAside.string());
    };
    const auto stores = makeSqliteStores("/dev/null/store", makeOpensslDigest(), note);
    EXPECT_EQ(stores->suite("suite"), nullptr);
    EXPECT_THAT(reports, ElementsAre("/dev/null/store/suite.suite.sqlite|"));
    EXPECT_TRUE(stores->standard()->set("a", "1"));
    EXPECT_EQ(stores->standard()->string("a"), "1");
    EXPECT_FALSE(stores->standard()->isKept());
}

TEST(SqliteStores, KeepEveryAcknowledgedWriteOfAWriterThatIsKilled) {
    constexpr int keys = 5;
    const auto key = [](int n) { return "key" + std::to_string(n % keys); };
    const auto value = [](int n) {
        return std::to_string(n) + std::string(static_cast<std::size_t>(n % 7) * 700, 'x');
    };
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    StoreFolder store;
    for (int first = 0, round = 0; round < 220 && !HasFailure(); ++round) {
        const OtherProcess writer([&](int channel) {
            const auto suite = store.suite();
            for (int n = first; suite->set(key(n), value(n)) && tell(channel, n); ++n) {
            }
            return false;
        });
        int last = first - 1;
        for (auto writes = random() % 5; writes > 0 && hear(writer.channel, last); --writes) {
        }
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 1500);
        while (std::chrono::steady_clock::now() < end) {
        }
        ::kill(writer.process, SIGKILL);
        while (hear(writer.channel, last)) {
        }
        EXPECT_TRUE(WIFSIGNALED(writer.status())) << "the writer had given up by itself";

        const auto suite = store.suite();
        ASSERT_TRUE(suite);
        // The write after the last acknowledged one may also be there.
        const int newest = suite->string(key(last + 1)) == value(last + 1) ? last + 1 : last;
        for (int n = std::max(0, newest - keys + 1); n <= newest; ++n) EXPECT_EQ(suite->string(key(n)), value(n));
        first = newest + 1;
    }
    EXPECT_THAT(store.setAside, IsEmpty());
}

void replaceContents(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

/// A folder whose suite holds some values.
struct FilledFolder : StoreFolder {
    FilledFolder() {
        const auto filled = suite();
        filled->set("text", "secret");
        filled->set("date", Date(std::chrono::seconds(7)));
        for (int i = 0; i < 30; ++i) filled->set("more" + std::to_string(i), Bytes(200, 1));
        filled->remove("more5");
    }
    bool isIntact() { return suite()->string("text") == "secret" && suite()->data("more29") == Bytes(200, 1); }
    bool isFresh() { return suite()->value("text") == std::nullopt && suite()->value("more29") == std::nullopt; }
};

std::string sqliteFile(const char* statements) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "other";
    sqlite3* database = nullptr;
    sqlite3_open(path.c_str(), &database);
    sqlite3_exec(database, statements, nullptr, nullptr, nullptr);
    sqlite3_close(database);
    return contents(path);
}

TEST(SqliteStores, SetAsideWhatIsDamagedAndLeaveWhatIsNotTheirs) {
    enum Fate { USED, SET_ASIDE, LEFT };
    FilledFolder store;
    const auto sound = contents(store.file);
    for (const auto& [name, bytes, fate] : std::vector<std::tuple<const char*, std::string, Fate>>{
             {"sound", sound, USED},
             {"empty", "", USED},
             {"a further column", sqliteFile("CREATE TABLE entry(more, key TEXT PRIMARY KEY, value, checksum)"), USED},
             {"one page", sound.substr(0, 4096), SET_ASIDE},
             {"text instead", "{\"session_token\":\"x\"}", SET_ASIDE},
             {"a page of zeros", sound.substr(0, 4096) + std::string(4096, '\0') + sound.substr(8192), SET_ASIDE},
             {"a value that nobody signed",
              sqliteFile("CREATE TABLE entry(key, value, checksum); INSERT INTO entry VALUES('text', 'forged', x'00')"),
              SET_ASIDE},
             {"the table is lost", sqliteFile("CREATE TABLE other(x); PRAGMA user_version=1"), SET_ASIDE},
             {"another program's", sqliteFile("CREATE TABLE other(x)"), LEFT},
             {"a newer version's", sqliteFile("PRAGMA journal_mode=WAL; CREATE TABLE entry(k); PRAGMA user_version=2"),
              LEFT},
         }) {
        SCOPED_TRACE(name);
        store.setAside.clear();
        std::filesystem::remove(store.damagedFile);
        replaceContents(store.file, bytes);
        const auto suite = store.suite();
        const auto setAside = std::exchange(store.setAside, {});
        if (fate == LEFT) {
            EXPECT_EQ(suite, nullptr);
            EXPECT_THAT(setAside, ElementsAre(std::filesystem::path()));
            EXPECT_EQ(contents(store.file), bytes);
            continue;
        }
        ASSERT_TRUE(suite);
        EXPECT_EQ(suite->string("text").has_value(), bytes == sound);
        EXPECT_TRUE(suite->set("new", "1"));
        EXPECT_EQ(suite->string("new"), "1");
        EXPECT_EQ(setAside, fate == USED ? decltype(setAside){} : decltype(setAside){store.damagedFile});
        EXPECT_EQ(std::filesystem::exists(store.damagedFile), fate == SET_ASIDE);
    }
}

TEST(SqliteStores, KeepOneDamagedFileForAWeekAlone) {
    FilledFolder store;
    for (const std::string bytes : {"damaged once", "damaged twice"}) {
        replaceContents(store.file, bytes);
        ASSERT_TRUE(store.suite());
        EXPECT_EQ(contents(store.damagedFile).size(), bytes.size());
        EXPECT_EQ(std::filesystem::status(store.damagedFile).permissions(), std::filesystem::perms(0600));
    }
    EXPECT_THAT(store.setAside, SizeIs(2));
    const auto now = std::filesystem::file_time_type::clock::now();
    for (const int days : {6, 8, -8}) {
        SCOPED_TRACE(days);
        replaceContents(store.damagedFile, "damaged");
        std::filesystem::last_write_time(store.damagedFile, now - std::chrono::hours(24 * days));
        ASSERT_TRUE(store.suite());
        EXPECT_EQ(std::filesystem::exists(store.damagedFile), days == 6);
    }
}

TEST(SqliteStores, NeverGiveAWrongValueWhicheverByteIsFlipped) {
    FilledFolder store;
    const auto sound = contents(store.file);
    std::size_t damages = 0;
    std::vector<std::size_t> left;  // because it may be a newer version's
    for (std::size_t at = 0; at < sound.size(); at += at < 128 ? 1 : 17) {
        SCOPED_TRACE("byte " + std::to_string(at));
        store.setAside.clear();
        auto flipped = sound;
        flipped[at] = static_cast<char>(~flipped[at]);
        replaceContents(store.file, flipped);
        const auto suite = store.suite();
        if (!suite) {
            EXPECT_EQ(contents(store.file), flipped);
            left.push_back(at);
            continue;
        }
        EXPECT_TRUE(store.setAside.empty() ? store.isIntact() : store.isFresh());
        EXPECT_TRUE(suite->set("new", "1"));
        damages += store.setAside.size();
    }
    EXPECT_GT(damages, 100U);
    EXPECT_THAT(left, ElementsAre(18, 47, 60, 61, 62, 63)) << "the version numbers in the file's header";
}

TEST(SqliteStores, SetAsideWhatIsDamagedWhileItIsOpen) {
    FilledFolder store;
    const auto suite = store.suite();
    EXPECT_EQ(suite->string("text"), "secret");
    replaceContents(store.file, std::string(8192, '\x33'));
    EXPECT_EQ(suite->string("text"), std::nullopt);
    EXPECT_TRUE(suite->set("text", "next"));
    EXPECT_EQ(suite->string("text"), "next");
    EXPECT_THAT(store.setAside, SizeIs(1));
}

TEST(SqliteStores, FollowAnotherProcessThatSetsTheFileAside) {
    FilledFolder store;
    const OtherProcess other([&](int channel) {
        int turn = 0;
        hear(channel, turn);
        // The second page: the change counter, by which the parent looks, is in the first.
        std::fstream(store.file, std::ios::binary | std::ios::in | std::ios::out).seekp(4096)
            << std::string(4096, '\x5A');
        return store.suite()->set("child", "1") && store.setAside.size() == 1;
    });
    const auto suite = store.suite();
    ASSERT_EQ(suite->string("text"), "secret");
    ASSERT_TRUE(tell(other.channel, 0));
    ASSERT_EQ(other.status(), 0);
    EXPECT_TRUE(suite->set("parent", "1"));
    EXPECT_EQ(suite->string("child"), "1");
    EXPECT_EQ(suite->string("text"), std::nullopt);
    EXPECT_THAT(store.setAside, IsEmpty());
}

enum class Fault {
    REFUSED_ONCE,  // one operation fails and does nothing
    DONE_ONCE,     // one operation reports a failure but was carried out
    GARBLED_ONCE,  // one read gives zeros
    FOR_EVER,      // from one operation on, all fail
};

/// When the next fault comes.
class FaultPlan {
public:
    void failAt(int turn, Fault fault) { mTurnsLeft = turn, mFault = fault; }
    /// Ends the fault, and returns whether it had come.
    bool repair() { return mTurnsLeft = 0, std::exchange(mHasCome, false); }
    std::optional<Fault> next() {
        const bool isTurn = mTurnsLeft > 0 && --mTurnsLeft == 0;
        mHasCome = mHasCome || isTurn;
        return isTurn || (mHasCome && mFault == Fault::FOR_EVER) ? std::optional(mFault) : std::nullopt;
    }

private:
    int mTurnsLeft = 0;  // 0 if none is planned
    bool mHasCome = false;
    Fault mFault = Fault::REFUSED_ONCE;
};

/// While this lives, SQLite's disk and memory fail as planned.
class FailingDevice {
public:
    static inline FaultPlan disk;
    static inline FaultPlan memory;

    FailingDevice() {
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory);
        auto failing = realMemory;
        failing.xMalloc = [](int size) { return memory.next() ? nullptr : realMemory.xMalloc(size); };
        failing.xRealloc = [](void* block, int size) {
            return memory.next() ? nullptr : realMemory.xRealloc(block, size);
        };
        sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
        realDisk = sqlite3_vfs_find(nullptr);
        vfs = *realDisk;
        vfs.zName = "failing";
        vfs.szOsFile = static_cast<int>(sizeof(File)) + realDisk->szOsFile;
        vfs.xOpen = &open;
        vfs.xDelete = [](sqlite3_vfs*, const char* path, int sync) {
            return attempt(SQLITE_IOERR_DELETE, [&] { return realDisk->xDelete(realDisk, path, sync); });
        };
        sqlite3_vfs_register(&vfs, 1);
    }
    ~FailingDevice() {
        sqlite3_vfs_unregister(&vfs);
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_MALLOC, &realMemory);
    }
    FailingDevice(const FailingDevice&) = delete;
    FailingDevice& operator=(const FailingDevice&) = delete;

private:
    struct File : sqlite3_file {
        sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };
    static sqlite3_file* real(sqlite3_file* file) { return static_cast<File*>(file)->real(); }

    template <class Operation>
    static int attempt(int failure, const Operation& operation) {
        const auto fault = disk.next();
        if (!fault || fault == Fault::GARBLED_ONCE) return operation();
        if (fault == Fault::DONE_ONCE) operation();
        return failure;
    }

    template <auto member, class... Arguments>
    static int forward(sqlite3_file* file, Arguments... arguments) {
        return (real(file)->pMethods->*member)(real(file), arguments...);
    }

    static int open(sqlite3_vfs*, const char* path, sqlite3_file* file, int flags, int* outFlags) {
        using Methods = sqlite3_io_methods;
        static const Methods methods = [] {
            Methods all{};
            all.iVersion = 1;
            all.xClose = &forward<&Methods::xClose>;
            all.xRead = [](sqlite3_file* f, void* bytes, int size, sqlite3_int64 at) {
                const auto fault = disk.next();
                if (fault == Fault::GARBLED_ONCE)
                    return std::memset(bytes, 0, static_cast<std::size_t>(size)), SQLITE_OK;
                const int code = forward<&Methods::xRead>(f, bytes, size, at);
                return fault ? SQLITE_IOERR_READ : code;
            };
            all.xWrite = [](sqlite3_file* f, const void* bytes, int size, sqlite3_int64 at) {
                return attempt(SQLITE_FULL, [&] { return forward<&Methods::xWrite>(f, bytes, size, at); });
            };
            all.xTruncate = [](sqlite3_file* f, sqlite3_int64 size) {
                return attempt(SQLITE_IOERR_TRUNCATE, [&] { return forward<&Methods::xTruncate>(f, size); });
            };
            all.xSync = [](sqlite3_file* f, int how) {
                return attempt(SQLITE_IOERR_FSYNC, [&] { return forward<&Methods::xSync>(f, how); });
            };
            all.xFileSize = [](sqlite3_file* f, sqlite3_int64* size) {
                return attempt(SQLITE_IOERR_FSTAT, [&] { return forward<&Methods::xFileSize>(f, size); });
            };
            all.xLock = &forward<&Methods::xLock, int>;
            all.xUnlock = &forward<&Methods::xUnlock, int>;
            all.xCheckReservedLock = &forward<&Methods::xCheckReservedLock, int*>;
            all.xFileControl = &forward<&Methods::xFileControl, int, void*>;
            all.xSectorSize = &forward<&Methods::xSectorSize>;
            all.xDeviceCharacteristics = &forward<&Methods::xDeviceCharacteristics>;
            return all;
        }();
        file->pMethods = nullptr;
        if (disk.next()) return SQLITE_CANTOPEN;
        const int code = realDisk->xOpen(realDisk, path, real(file), flags, outFlags);
        if (code == SQLITE_OK) file->pMethods = &methods;
        return code;
    }

    static inline sqlite3_mem_methods realMemory{};
    static inline sqlite3_vfs* realDisk = nullptr;
    static inline sqlite3_vfs vfs{};
};

/// A healthy store on a device that fails in one operation; afterwards its file must be as good as before.
struct Trial {
    StoreFolder store;
    std::shared_ptr<KeyValueStore> suite = store.suite();
    std::string expected = "old";
    bool isReported = false;

    Trial() { EXPECT_TRUE(suite->set("a", "old") && suite->set("b", std::string(10'000, 'b'))); }
    ~Trial() {
        suite.reset();
        EXPECT_EQ(store.setAside, isReported ? std::vector{std::filesystem::path()} : decltype(store.setAside){});
        EXPECT_FALSE(std::filesystem::exists(store.damagedFile));
        EXPECT_EQ(store.suite()->string("a"), expected);
        EXPECT_EQ(store.suite()->string("b"), std::string(10'000, 'b'));
        EXPECT_TRUE(store.suite()->set("a", "newer"));
    }
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;
};

using Repair = std::function<void()>;

/// False if memory was missing.
bool hasMemory(const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void openIt(Trial& trial, Fault fault, const Repair& plan, const Repair& repair) {
    trial.suite.reset();
    plan();
    const bool hadMemory = hasMemory([&] { trial.suite = trial.store.suite(); });
    repair();
    trial.isReported = hadMemory && !trial.suite;  // if it failed for ever
    if (fault != Fault::FOR_EVER) {
        ASSERT_TRUE(trial.suite);
        EXPECT_EQ(trial.suite->string("a"), "old");
    }
}

void readIt(Trial& trial, Fault, const Repair& plan, const Repair& repair) {
    SuiteFile(trial.store.file, makeOpensslDigest()).write({{"a", "another process's"}});
    trial.expected = "another process's";
    plan();
    const auto seen = trial.suite->string("a");
    repair();
    EXPECT_TRUE(seen == "old" || seen == trial.expected) << seen.value_or("nothing");
    EXPECT_EQ(trial.suite->string("a"), trial.expected);
}

void writeIt(Trial& trial, Fault, const Repair& plan, const Repair& repair) {
    plan();
    bool isKept = false;
    hasMemory([&] { isKept = trial.suite->set("a", "new"); });
    const auto seen = trial.suite->string("a");
    repair();
    if (isKept) trial.expected = "new";
    EXPECT_EQ(seen, trial.expected);
    EXPECT_EQ(trial.suite->string("a"), trial.expected);
}

TEST(SqliteStores, LoseNothingAndSetNothingAsideWhenDiskOrMemoryFail) {
    const FailingDevice device;
    const std::initializer_list<std::pair<const char*, decltype(&openIt)>> operations{
        {"open", openIt}, {"read", readIt}, {"write", writeIt}};
    for (const auto& [what, operation] : operations) {
        for (auto* const plan : {&FailingDevice::disk, &FailingDevice::memory}) {
            for (const auto fault : {Fault::REFUSED_ONCE, Fault::DONE_ONCE, Fault::GARBLED_ONCE, Fault::FOR_EVER}) {
                bool hasCome = true;
                int turn = 1;
                for (; hasCome && turn < 2000; ++turn) {
                    SCOPED_TRACE(testing::Message() << what << ", fault " << int(fault) << " at " << turn);
                    Trial trial;
                    operation(
                        trial, fault, [&] { plan->failAt(turn, fault); }, [&] { hasCome = plan->repair(); });
                }
                EXPECT_GT(turn, 3) << what;
            }
        }
    }
}

}  // namespace
}  // namespace kavio::test
