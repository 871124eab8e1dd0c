#include "platform/linux/suite_file.h"
#include "platform/store_folder.h"

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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
    return StoreFolder::contents(path);
}

TEST(SqliteStores, SetADamagedFileAsideAndReportIt) {
    FilledFolder store;
    const auto sound = StoreFolder::contents(store.file);
    struct Case {
        const char* name;
        std::string bytes;
        bool isDamaged = true;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"sound", sound, false},
             {"empty", "", false},
             {"two bytes", "SQ"},
             {"header cut", sound.substr(0, 60)},
             {"one page", sound.substr(0, 4096)},
             {"cut in a page", sound.substr(0, sound.size() - 1000)},
             {"header overwritten", std::string(100, '\xAA') + sound.substr(100)},
             {"text instead", "{\"session_token\":\"x\"}"},
             {"a page overwritten", sound.substr(0, 4096) + std::string(4096, '\x5A') + sound.substr(8192)},
             {"a page of zeros", sound.substr(0, 4096) + std::string(4096, '\0') + sound.substr(8192)},
             {"another program's file", sqliteFile("CREATE TABLE other(x)")},
             {"a table like ours", sqliteFile("CREATE TABLE entry(key, value)")},
             {"a value that nobody signed", sqliteFile("CREATE TABLE entry(key, value, checksum);"
                                                       "INSERT INTO entry VALUES('text', 'forged', x'00')")},
         }) {
        SCOPED_TRACE(c.name);
        store.setAside.clear();
        StoreFolder::replaceContents(store.file, c.bytes);
        const auto suite = store.suite();
        ASSERT_TRUE(suite);
        EXPECT_EQ(suite->string("text").has_value(), c.bytes == sound);
        EXPECT_TRUE(suite->set("new", "1"));
        ASSERT_THAT(store.setAside, SizeIs(c.isDamaged ? 1 : 0));
        if (c.isDamaged) {
            EXPECT_THAT(store.setAside[0].filename().string(),
                        testing::MatchesRegex("suite\\.suite\\.sqlite\\.damaged-[0-9]{8}-[0-9]{6}(-[0-9]+)?"));
            EXPECT_EQ(StoreFolder::contents(store.setAside[0]).size(), c.bytes.size());
        }
    }
}

TEST(SqliteStores, NeverGiveAWrongValueWhicheverByteIsFlipped) {
    FilledFolder store;
    const auto sound = StoreFolder::contents(store.file);
    int damages = 0;
    for (std::size_t at = 0; at < sound.size(); at += at < 128 ? 1 : 17) {
        SCOPED_TRACE("byte " + std::to_string(at));
        store.setAside.clear();
        auto flipped = sound;
        flipped[at] = static_cast<char>(~flipped[at]);
        StoreFolder::replaceContents(store.file, flipped);
        const auto suite = store.suite();
        ASSERT_TRUE(suite);
        EXPECT_TRUE(store.setAside.empty() ? store.isIntact() : store.isFresh());
        EXPECT_TRUE(suite->set("new", "1"));
        damages += static_cast<int>(store.setAside.size());
        for (const auto& path : store.setAside) std::filesystem::remove(path);
    }
    EXPECT_GT(damages, 100);
}

TEST(SqliteStores, TakeTheJournalOfADamagedFileAwayWithIt) {
    FilledFolder store;
    SuiteFile file(store.file, makeOpensslDigest());
    file.refresh();
    StoreFolder::replaceContents(store.file.string() + "-journal", "what a crash has left");
    const auto aside = file.setAside().filename().string();
    EXPECT_THAT(store.files(), ElementsAre(aside, aside + "-journal"));
}

TEST(SqliteStores, SetAsideWhatIsDamagedWhileItIsOpen) {
    FilledFolder store;
    const auto suite = store.suite();
    EXPECT_EQ(suite->string("text"), "secret");
    StoreFolder::replaceContents(store.file, std::string(8192, '\x33'));
    EXPECT_EQ(suite->string("text"), std::nullopt);
    EXPECT_THAT(store.setAside, SizeIs(1));
    EXPECT_TRUE(suite->set("text", "next"));
    EXPECT_EQ(suite->string("text"), "next");
    EXPECT_THAT(store.setAside, SizeIs(1));
}

TEST(SqliteStores, FollowAnotherProcessThatSetsTheFileAside) {
    for (const bool isReadFirst : {true, false}) {
        SCOPED_TRACE(isReadFirst ? "read first" : "written first");
        FilledFolder store;
        int isOpen[2];
        ASSERT_EQ(::pipe(isOpen), 0);
        const auto child = ::fork();
        if (child == 0) {
            char turn = 0;
            if (::read(isOpen[0], &turn, 1) != 1) ::_exit(1);
            {  // the second page: the change counter, by which the parent looks, is in the first
                std::fstream file(store.file, std::ios::binary | std::ios::in | std::ios::out);
                file.seekp(4096) << std::string(4096, '\x5A');
            }
            const auto suite = store.suite();
            ::_exit(suite->set("child", "1") && store.setAside.size() == 1 ? 0 : 1);
        }
        const auto suite = store.suite();
        ASSERT_EQ(suite->string("text"), "secret");
        ASSERT_EQ(::write(isOpen[1], "x", 1), 1);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_EQ(status, 0);
        EXPECT_TRUE(isReadFirst || suite->set("parent", "1"));
        EXPECT_EQ(suite->string("child"), "1");
        EXPECT_EQ(suite->string("text"), std::nullopt);
        EXPECT_THAT(store.setAside, IsEmpty());
        for (const int descriptor : isOpen) ::close(descriptor);
    }
}

}  // namespace
}  // namespace kavio::test
