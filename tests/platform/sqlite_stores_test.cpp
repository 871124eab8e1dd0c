#include "platform/linux/sqlite_stores.h"

#include "platform/linux/openssl.h"
#include "platform/linux/suite_file.h"
#include "platform/other_process.h"
#include "support/temporary_folder.h"

#include <kavio/platform/key_value_store.h>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace kavio::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// A store folder with one suite, and the reports of its damage.
struct StoreFolder {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "deep/store";
    const std::filesystem::path file = path / "suite.suite.sqlite";
    std::vector<std::filesystem::path> setAside;

    /// Opens the file anew as soon as nobody holds the suite any more.
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
    const auto stores = makeSqliteStores("/dev/null/store", makeOpensslDigest(), {});
    EXPECT_EQ(stores->suite("suite"), nullptr);
    stores->standard()->set("a", "1");
    EXPECT_EQ(stores->standard()->string("a"), "1");
}

TEST(SqliteStores, ShowEachProcessTheOthersWritesAtOnce) {
    StoreFolder store;
    const OtherProcess other([&](int channel) {  // answers each number that it finds with the next one
        const auto suite = store.suite();
        for (int turn = 0; hear(channel, turn); tell(channel, turn))
            suite->set("n", std::to_string(std::stoi(suite->string("n").value_or("-1000")) + 1));
        return true;
    });
    const auto suite = store.suite();
    for (int turn = 0; turn < 50; ++turn) {
        ASSERT_TRUE(suite->set("n", std::to_string(turn * 10)));
        ASSERT_TRUE(tell(other.channel, turn) && hear(other.channel, turn));
        ASSERT_EQ(suite->string("n"), std::to_string(turn * 10 + 1));
    }
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
        // The write after the last acknowledged one may be there too.
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

TEST(SqliteStores, SetADamagedFileAsideAndReportIt) {
    FilledFolder store;
    const auto sound = contents(store.file);
    for (const auto& [name, bytes] : std::vector<std::pair<const char*, std::string>>{
             {"sound", sound},
             {"empty", ""},
             {"one page", sound.substr(0, 4096)},
             {"text instead", "{\"session_token\":\"x\"}"},
             {"a page of zeros", sound.substr(0, 4096) + std::string(4096, '\0') + sound.substr(8192)},
             {"another program's file", sqliteFile("CREATE TABLE other(x)")},
             {"a value that nobody signed", sqliteFile("CREATE TABLE entry(key, value, checksum);"
                                                       "INSERT INTO entry VALUES('text', 'forged', x'00')")},
         }) {
        SCOPED_TRACE(name);
        store.setAside.clear();
        replaceContents(store.file, bytes);
        const auto suite = store.suite();
        ASSERT_TRUE(suite);
        EXPECT_EQ(suite->string("text").has_value(), bytes == sound);
        EXPECT_TRUE(suite->set("new", "1"));
        const bool isDamaged = bytes != sound && !bytes.empty();
        ASSERT_THAT(store.setAside, SizeIs(isDamaged ? 1 : 0));
        if (!isDamaged) continue;
        EXPECT_THAT(store.setAside[0].filename().string(),
                    testing::MatchesRegex("suite\\.suite\\.sqlite\\.damaged-[0-9]{8}-[0-9]{6}(-[0-9]+)?"));
        EXPECT_EQ(contents(store.setAside[0]).size(), bytes.size());
    }
}

TEST(SqliteStores, TakeTheJournalOfADamagedFileAwayWithIt) {
    FilledFolder store;
    SuiteFile file(store.file, makeOpensslDigest());
    file.refresh();
    replaceContents(store.file.string() + "-journal", "what a crash has left");
    const auto aside = file.setAside();
    EXPECT_EQ(contents(aside.string() + "-journal"), "what a crash has left");
    EXPECT_FALSE(std::filesystem::exists(store.file.string() + "-journal"));
}

TEST(SqliteStores, NeverGiveAWrongValueWhicheverByteIsFlipped) {
    FilledFolder store;
    const auto sound = contents(store.file);
    std::size_t damages = 0;
    for (std::size_t at = 0; at < sound.size(); at += at < 128 ? 1 : 17) {
        SCOPED_TRACE("byte " + std::to_string(at));
        store.setAside.clear();
        auto flipped = sound;
        flipped[at] = static_cast<char>(~flipped[at]);
        replaceContents(store.file, flipped);
        const auto suite = store.suite();
        ASSERT_TRUE(suite);
        EXPECT_TRUE(store.setAside.empty() ? store.isIntact() : store.isFresh());
        EXPECT_TRUE(suite->set("new", "1"));
        damages += store.setAside.size();
        for (const auto& path : store.setAside) std::filesystem::remove(path);
    }
    EXPECT_GT(damages, 100U);
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
    REFUSED_ONCE,  // one operation fails, and did nothing
    DONE_ONCE,     // one operation reports a failure though it was carried out
    FULL,          // from that operation on everything fails as on a full disk
};

/// What SQLite asks of the disk, broken on purpose: while this lives its system calls that change a file may fail.
class FailingDisk {
public:
    FailingDisk() {
        breakCall("pwrite64", &::pwrite64);
        breakCall("ftruncate", &::ftruncate);
        breakCall("unlink", &::unlink);
    }
    ~FailingDisk() {
        repair();
        sqlite()->xSetSystemCall(sqlite(), nullptr, nullptr);
    }
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// The `n`th of the calls from now on meets the fault.
    static void failAt(int n, Fault fault) { callsLeft = n, currentFault = fault; }
    /// The disk works again. Whether the fault had been met.
    static bool repair() { return callsLeft = 0, std::exchange(isMet, false); }

private:
    static sqlite3_vfs* sqlite() { return sqlite3_vfs_find("unix"); }

    template <class Result, class... Arguments>
    static void breakCall(const char* name, Result (*call)(Arguments...)) {
        static auto* const real = call;  // of this type there is no other
        Result (*broken)(Arguments...) = [](Arguments... arguments) -> Result {
            const bool isTurn = callsLeft > 0 && --callsLeft == 0;
            isMet = isMet || isTurn;
            const bool isFull = isMet && currentFault == Fault::FULL;
            if (!isTurn && !isFull) return real(arguments...);
            if (currentFault == Fault::DONE_ONCE) real(arguments...);
            errno = isFull ? ENOSPC : EIO;
            return -1;
        };
        sqlite()->xSetSystemCall(sqlite(), name, reinterpret_cast<sqlite3_syscall_ptr>(broken));
    }

    static inline int callsLeft = 0;  // until the fault; 0: none is set
    static inline bool isMet = false;
    static inline Fault currentFault = Fault::REFUSED_ONCE;
};

TEST(SqliteStores, FailAWriteOnABrokenDiskAndLoseNothing) {
    for (const auto fault : {Fault::REFUSED_ONCE, Fault::DONE_ONCE, Fault::FULL}) {
        bool isMet = true;
        for (int n = 1; isMet; ++n) {
            SCOPED_TRACE("fault " + std::to_string(static_cast<int>(fault)) + " at operation " + std::to_string(n));
            ASSERT_LT(n, 100);
            StoreFolder store;
            FailingDisk disk;
            auto suite = store.suite();
            ASSERT_TRUE(suite->set("a", "old") && suite->set("b", std::string(10'000, 'b')));

            disk.failAt(n, fault);
            const bool isKept = suite->set("a", "new");
            const auto seen = suite->string("a");
            isMet = disk.repair();
            EXPECT_EQ(seen, isKept ? "new" : "old");
            EXPECT_TRUE(isKept || isMet);
            EXPECT_EQ(suite->string("a"), seen);
            suite.reset();
            EXPECT_EQ(store.suite()->string("a"), seen);
            EXPECT_EQ(store.suite()->string("b"), std::string(10'000, 'b'));
            EXPECT_TRUE(store.suite()->set("a", "newer"));
            EXPECT_THAT(store.setAside, IsEmpty());
        }
    }
}

}  // namespace
}  // namespace kavio::test
