#include "platform/linux/suite_file.h"
#include "platform/other_process.h"
#include "platform/store_folder.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cerrno>
#include <iterator>
#include <utility>

namespace kavio::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

std::string contents(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
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

TEST(SqliteStores, TakeTheJournalOfADamagedFileAwayWithIt) {
    FilledFolder store;
    SuiteFile file(store.file, makeOpensslDigest());
    file.refresh();
    replaceContents(store.file.string() + "-journal", "what a crash has left");
    const auto aside = file.setAside().filename().string();
    EXPECT_THAT(store.files(), testing::UnorderedElementsAre(aside, aside + "-journal"));
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
