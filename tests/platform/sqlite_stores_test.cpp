#include "platform/failing_disk.h"
#include "platform/store_folder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SqliteStores, KeepValuesWhenTheyAreOpenedAgain) {
    StoreFolder store;
    store.suite()->set("a", "1");
    store.suite()->set("b", Bytes{1, 2});
    store.suite()->remove("a");
    EXPECT_EQ(store.suite()->value("a"), std::nullopt);
    EXPECT_EQ(store.suite()->value("b"), StoredValue(Bytes{1, 2}));
    EXPECT_THAT(store.files(), ElementsAre("suite.suite.sqlite"));
}

TEST(SqliteStores, AreTheirUsersAloneWhateverTheUmask) {
    for (const mode_t mask : {0000, 0777}) {
        StoreFolder store;
        const auto former = ::umask(mask);
        const auto suite = store.suite();
        ::umask(former);
        ASSERT_TRUE(suite);
        struct stat folder {};
        struct stat file {};
        ASSERT_EQ(::stat(store.path.c_str(), &folder), 0);
        ASSERT_EQ(::stat(store.file.c_str(), &file), 0);
        EXPECT_EQ(folder.st_mode & 07777, 0700U);
        EXPECT_EQ(file.st_mode & 07777, 0600U);
    }
}

TEST(SqliteStores, TakeAccessToAnExistingFileFromOthers) {
    StoreFolder store;
    store.suite()->set("a", "1");
    ::chmod(store.file.c_str(), 0644);
    EXPECT_EQ(store.suite()->string("a"), "1");
    struct stat file {};
    ASSERT_EQ(::stat(store.file.c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777, 0600U);
}

TEST(SqliteStores, RefuseWhatIsNoPlainFile) {
    StoreFolder store;
    std::filesystem::create_directories(store.path);
    const auto elsewhere = store.folder.path() / "elsewhere";
    StoreFolder::replaceContents(elsewhere, "");
    std::filesystem::create_symlink(elsewhere, store.file);
    EXPECT_EQ(store.suite(), nullptr);
    EXPECT_EQ(StoreFolder::contents(elsewhere), "");
    std::filesystem::remove(store.file);
    std::filesystem::create_directory(store.file);
    EXPECT_EQ(store.suite(), nullptr);
    EXPECT_THAT(store.setAside, IsEmpty());
}

TEST(SqliteStores, LiveInMemoryWhereNothingCanBeWritten) {
    const auto stores = makeSqliteStores("/dev/null/store", makeOpensslDigest(), {});
    EXPECT_EQ(stores->suite("suite"), nullptr);
    stores->standard()->set("a", "1");
    EXPECT_EQ(stores->standard()->string("a"), "1");
}

TEST(SqliteStores, AreFoundInTheUsersDataFolder) {
    const TemporaryFolder folder;
    const auto write = [] { makeSqliteStores({}, makeOpensslDigest(), {})->standard()->set("a", "1"); };
    ::setenv("HOME", (folder.path() / "home").c_str(), 1);
    ::unsetenv("XDG_DATA_HOME");
    write();
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "home/.local/share/kavio/standard.sqlite"));
    ::setenv("XDG_DATA_HOME", (folder.path() / "data").c_str(), 1);
    write();
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "data/kavio/standard.sqlite"));
    ::unsetenv("XDG_DATA_HOME");
}

TEST(SqliteStores, ShowEachProcessTheOthersWritesAtOnce) {
    StoreFolder store;
    int toChild[2];
    int toParent[2];
    ASSERT_EQ(::pipe(toChild) | ::pipe(toParent), 0);
    constexpr int turns = 50;
    char turn = 0;
    const auto child = ::fork();
    if (child == 0) {  // the child answers each number that it finds with the next one
        const auto suite = store.suite();
        for (int i = 0; i < turns && ::read(toChild[0], &turn, 1) == 1; ++i) {
            suite->set("n", std::to_string(std::stoi(suite->string("n").value_or("-1000")) + 1));
            if (::write(toParent[1], &turn, 1) != 1) break;
        }
        ::_exit(0);
    }
    const auto suite = store.suite();
    for (int i = 0; i < turns; ++i) {
        ASSERT_TRUE(suite->set("n", std::to_string(i * 10)));
        ASSERT_EQ(::write(toChild[1], &turn, 1), 1);
        ASSERT_EQ(::read(toParent[0], &turn, 1), 1);
        ASSERT_EQ(suite->string("n"), std::to_string(i * 10 + 1));
    }
    ::waitpid(child, nullptr, 0);
    for (const int descriptor : {toChild[0], toChild[1], toParent[0], toParent[1]}) ::close(descriptor);
}

TEST(SqliteStores, FailAWriteOnABrokenDiskAndLoseNothing) {
    using enum FailingDisk::Fault;
    for (const auto fault : {REFUSED_ONCE, DONE_ONCE, FULL}) {
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

TEST(SqliteStores, GiveNoSuiteWhenItsFileCannotBeMade) {
    bool isMet = true;
    for (int n = 1; isMet; ++n) {
        StoreFolder store;
        FailingDisk disk;
        disk.failAt(n, FailingDisk::Fault::FULL);
        const bool isThere = store.suite() != nullptr;
        isMet = disk.repair();
        EXPECT_EQ(isThere, !isMet) << "full at operation " << n;
        EXPECT_TRUE(store.suite()->set("a", "1"));
        EXPECT_THAT(store.setAside, IsEmpty());
    }
}

}  // namespace
}  // namespace kavio::test
