#include "platform/store_folder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>
#include <string>

namespace kavio::test {
namespace {

constexpr int keys = 5;

std::string keyOf(int n) { return "key" + std::to_string(n % keys); }
std::string valueOf(int n) { return std::to_string(n) + std::string(static_cast<std::size_t>(n % 7) * 700, 'x'); }

/// Writes value after value and tells the number of each one that is kept.
[[noreturn]] void writeForEver(StoreFolder& store, int first, int acknowledge) {
    const auto suite = store.suite();
    for (int n = first; suite->set(keyOf(n), valueOf(n)); ++n) {
        if (::write(acknowledge, &n, sizeof n) != sizeof n) break;
    }
    ::_exit(1);
}

/// Lets a writer go on for a random time after some of its writes, then kills it. Gives its last kept write.
int killAWriter(StoreFolder& store, int first, std::mt19937& random) {
    int channel[2];
    if (::pipe(channel) != 0) return -1;
    const auto writer = ::fork();
    if (writer == 0) writeForEver(store, first, channel[1]);
    ::close(channel[1]);

    int last = first - 1;
    const auto read = [&] { return ::read(channel[0], &last, sizeof last) == sizeof last; };
    for (auto writes = random() % 5; writes > 0 && read(); --writes) {
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 1500);
    while (std::chrono::steady_clock::now() < end) {
    }
    ::kill(writer, SIGKILL);
    while (read()) {
    }
    ::close(channel[0]);
    int status = 0;
    ::waitpid(writer, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "the writer had given up by itself";
    return last;
}

TEST(SqliteStores, KeepEveryAcknowledgedWriteOfAWriterThatIsKilled) {
    StoreFolder store;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int first = 0, round = 0; round < 220 && !testing::Test::HasFailure(); ++round) {
        const int last = killAWriter(store, first, random);
        const auto suite = store.suite();
        ASSERT_TRUE(suite);
        // The write after the last acknowledged one may be there too.
        const bool isNextThere = suite->string(keyOf(last + 1)) == valueOf(last + 1);
        const int newest = isNextThere ? last + 1 : last;
        for (int n = std::max(0, newest - keys + 1); n <= newest; ++n) EXPECT_EQ(suite->string(keyOf(n)), valueOf(n));
        first = newest + 1;
    }
    EXPECT_TRUE(store.setAside.empty());
}

}  // namespace
}  // namespace kavio::test
