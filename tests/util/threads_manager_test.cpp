#include "support/fakes/fake_device.h"

#include <kavio/threads_manager.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

class ThreadsManagerTest : public testing::Test {
protected:
    const FakeDevice device;
    const InstalledPlatform installed{device.platform()};
};

TEST_F(ThreadsManagerTest, RunsABlockForTheMainThreadAtOnceThereAndLaterFromElsewhere) {
    std::vector<std::thread::id> ran;
    const auto block = [&] { ran.push_back(ThreadsManager::getCurrentThread()); };
    ThreadsManager::runOnMainThread(block);
    EXPECT_EQ(ran.size(), 1U);

    bool isMain = true;
    std::thread([&] {
        isMain = ThreadsManager::isMainThread();
        ThreadsManager::runOnMainThread(block);
    }).join();
    EXPECT_FALSE(isMain);
    EXPECT_EQ(ran.size(), 1U);
    device.mainQueue->runAll();
    EXPECT_EQ(ran, std::vector(2, std::this_thread::get_id()));
}

TEST_F(ThreadsManagerTest, HasASerialAndAConcurrentQueue) {
    const auto together = std::make_shared<std::latch>(3);
    std::vector<int> order;
    for (int i = 0; i < 20; ++i) ThreadsManager::startSyncTask([&, i] { order.push_back(i); });
    ThreadsManager::startSyncTask([together] { together->arrive_and_wait(); });
    ThreadsManager::startAsyncTask([together] { together->arrive_and_wait(); });
    together->arrive_and_wait();
    EXPECT_EQ(order.size(), 20U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST_F(ThreadsManagerTest, GuardsBlocksByTheAddressOfTheirLock) {
    const int lock = 0;
    const int other = 0;
    int counter = 0;  // unguarded, it would be a race
    const auto count = [&] {
        for (int i = 0; i < 1000; ++i) {
            ThreadsManager::synchronized(&lock, [&] {
                ThreadsManager::synchronized(&lock, [&] { ThreadsManager::synchronized(&other, [&] { ++counter; }); });
            });
        }
    };
    std::thread second(count);
    count();
    second.join();
    EXPECT_EQ(counter, 2000);

    std::latch inside(2);  // two locks: neither waits for the other
    const auto meet = [&](const int& address) {
        ThreadsManager::synchronized(&address, [&] { inside.arrive_and_wait(); });
    };
    std::thread third(meet, std::cref(lock));
    meet(other);
    third.join();
}

}  // namespace
}  // namespace kavio::test
