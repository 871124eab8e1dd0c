#include "platform/other_process.h"
#include "platform/store_folder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <random>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

mode_t modeOf(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(SqliteStores, AreTheirUsersAloneWhateverTheUmask) {
    for (const mode_t mask : {0000, 0777}) {
        StoreFolder store;
        const auto former = ::umask(mask);
        EXPECT_TRUE(store.suite());
        ::umask(former);
        EXPECT_EQ(modeOf(store.path), 0700U);
        EXPECT_EQ(modeOf(store.file), 0600U);
        ::chmod(store.file.c_str(), 0644);
        EXPECT_TRUE(store.suite());
        EXPECT_EQ(modeOf(store.file), 0600U) << "of a file that others could read until now";
    }
}

TEST(SqliteStores, RefuseWhatIsNoPlainFile) {
    StoreFolder store;
    std::filesystem::create_directories(store.path);
    const auto elsewhere = store.folder.path() / "elsewhere";
    std::ofstream(elsewhere).close();
    std::filesystem::create_symlink(elsewhere, store.file);
    EXPECT_EQ(store.suite(), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
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
    const TemporaryFolder home;
    ::setenv("HOME", home.path().c_str(), 1);
    for (const bool isNamed : {false, true}) {
        isNamed ? ::setenv("XDG_DATA_HOME", (home.path() / "data").c_str(), 1) : ::unsetenv("XDG_DATA_HOME");
        makeSqliteStores({}, makeOpensslDigest(), {})->standard()->set("a", "1");
        const auto* folder = isNamed ? "data" : ".local/share";
        EXPECT_TRUE(std::filesystem::exists(home.path() / folder / "kavio/standard.sqlite"));
    }
    ::unsetenv("XDG_DATA_HOME");
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

}  // namespace
}  // namespace kavio::test
