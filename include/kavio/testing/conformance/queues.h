#pragma once

// What the queues of a device promise.
//   INSTANTIATE_TEST_SUITE_P(Mine, MainQueueConformance, testing::Values(port));
//   INSTANTIATE_TEST_SUITE_P(Mine, WorkQueueConformance, testing::Values(port));

#include <kavio/testing/conformance/port.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kavio::test {

/// What the main queue promises.
class MainQueueConformance : public PortConformance {
protected:
    bool runUntil(const std::function<bool()>& done) const { return port().runUntil(*platform, done); }
};

TEST_P(MainQueueConformance, RunsWorkInOrderAndNeverInsideThePost) {
    KAVIO_NEEDS(platform->mainQueue);
    std::vector<std::string> ran;
    auto& queue = *platform->mainQueue;
    const auto note = [&](const char* what) { return [&ran, what] { ran.emplace_back(what); }; };
    queue.postAfter(std::chrono::milliseconds(-5), note("overdue"));
    queue.post([&] {
        queue.post(note("posted by work"));
        ran.emplace_back("first");
    });
    queue.post(note("second"));
    EXPECT_THAT(ran, testing::IsEmpty()) << "Work ran inside the call that posted it.";
    EXPECT_TRUE(runUntil([&] { return ran.size() == 4; })) << "Work that was posted never ran.";
    EXPECT_THAT(ran, testing::ElementsAre("overdue", "first", "second", "posted by work"))
        << "Work must run in the order in which it was posted, and never inside the call that posts it.";
}

TEST_P(MainQueueConformance, RunsDelayedWorkNeverTooSoon) {
    KAVIO_NEEDS(platform->mainQueue);
    KAVIO_NEEDS(platform->clock);
    using std::chrono::milliseconds;
    const auto start = platform->clock->uptime();
    std::size_t ran = 0;
    // More milliseconds than fit into 32 bits.
    const auto hasRunTooSoon = std::make_shared<bool>(false);
    platform->mainQueue->postAfter(milliseconds(std::int64_t{1} << 32U), [hasRunTooSoon] { *hasRunTooSoon = true; });
    for (const auto delay : {milliseconds(60), milliseconds(0), milliseconds(40)}) {
        platform->mainQueue->postAfter(delay, [&, delay] {
            EXPECT_GE(platform->clock->uptime() - start, delay)
                << "Work ran before its delay had passed on the monotonic clock.";
            ++ran;
        });
    }
    EXPECT_TRUE(runUntil([&] { return ran == 3; })) << "Delayed work never ran.";
    EXPECT_FALSE(*hasRunTooSoon) << "Work that was due in 49 days ran at once.";
}

TEST_P(MainQueueConformance, RunsWorkOfAnyThreadOnTheMainThreadAlone) {
    KAVIO_NEEDS(platform->mainQueue);
    auto& queue = *platform->mainQueue;
    std::vector<int> ran;  // without a lock: two at once would be a race
    bool isMainInWork = true;
    std::atomic<bool> isMainElsewhere = false;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            if (queue.isMainThread()) isMainElsewhere = true;
            for (int i = 0; i < 100; ++i) {
                queue.post([&, number = thread * 100 + i] {
                    isMainInWork = isMainInWork && queue.isMainThread();
                    ran.push_back(number);
                });
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(queue.isMainThread()) << "The main thread is not known as such.";
    EXPECT_FALSE(isMainElsewhere) << "Another thread is taken for the main thread.";
    EXPECT_THAT(ran, testing::IsEmpty()) << "Work ran on the thread that posted it.";
    EXPECT_TRUE(runUntil([&] { return ran.size() == 400; })) << "Work that another thread posted never ran.";
    EXPECT_TRUE(isMainInWork) << "Work ran on another thread than the main one.";
    std::stable_sort(ran.begin(), ran.end(), [](int a, int b) { return a / 100 < b / 100; });
    EXPECT_TRUE(std::ranges::is_sorted(ran)) << "Work of one thread must run in the order in which it was posted.";
}

/// What the background queues promise.
class WorkQueueConformance : public PortConformance {};

TEST_P(WorkQueueConformance, SerialQueueRunsOneAtATimeInOrderOnAnotherThread) {
    KAVIO_NEEDS(platform->serialQueue);
    std::vector<int> ran;  // without a lock: two at once would be a race
    std::atomic<std::thread::id> thread;
    for (int i = 0; i < 100; ++i) platform->serialQueue->async([&, i] { ran.push_back(i); });
    platform->serialQueue->async([] { throw std::runtime_error("the work's own fault"); });
    platform->serialQueue->async([&] { thread = std::this_thread::get_id(); });
    ASSERT_TRUE(eventually([&] { return thread.load() != std::thread::id(); })) << "Work was lost.";
    EXPECT_NE(thread.load(), std::this_thread::get_id()) << "Work ran on the caller's thread.";
    EXPECT_EQ(ran.size(), 100U) << "Work of a serial queue was overtaken or lost.";
    EXPECT_TRUE(std::ranges::is_sorted(ran)) << "A serial queue must keep the order.";
}

TEST_P(WorkQueueConformance, ConcurrentQueueRunsWorkSideBySide) {
    KAVIO_NEEDS(platform->concurrentQueue);
    const auto arrived = std::make_shared<std::atomic<int>>(0);
    const auto met = std::make_shared<std::atomic<int>>(0);
    for (int i = 0; i < 4; ++i) {
        platform->concurrentQueue->async([arrived, met] {
            ++*arrived;
            if (eventually([&] { return *arrived == 4; })) ++*met;
        });
    }
    EXPECT_TRUE(eventually([&] { return *met == 4; })) << "Work of a concurrent queue waits for other work to end.";
}

TEST_P(WorkQueueConformance, DestroyingAQueueWaitsForWorkUnderWayAndDropsTheRest) {
    KAVIO_NEEDS(platform->serialQueue);
    std::atomic<bool> hasStarted = false;
    std::atomic<bool> mayEnd = false;
    std::vector<std::string> ran;
    auto queue = std::move(platform->serialQueue);
    queue->async([&] {
        hasStarted = true;
        eventually([&] { return mayEnd.load(); });
        ran.emplace_back("under way");
    });
    queue->async([&] { ran.emplace_back("dropped"); });
    // This is dropped as soon as the queue is being destroyed, and the first may then end.
    queue->async([end = std::shared_ptr<void>(nullptr, [&](void*) { mayEnd = true; })] {});
    ASSERT_TRUE(eventually([&] { return hasStarted.load(); })) << "Work was lost.";
    queue.reset();
    EXPECT_TRUE(mayEnd) << "Work that had not begun is still held when the queue is gone.";
    EXPECT_THAT(ran, testing::ElementsAre("under way"))
        << "Destroying a queue must wait for work under way and drop what has not begun.";
}

TEST_P(WorkQueueConformance, WorkMayDropTheLastReferenceToItsQueue) {
    KAVIO_NEEDS(platform->serialQueue);
    std::atomic<bool> isHandedOver = false;
    std::atomic<bool> isDropped = false;
    platform->serialQueue->async([&] {
        eventually([&] { return isHandedOver.load(); });
        platform->serialQueue.reset();
        isDropped = true;
    });
    isHandedOver = true;
    EXPECT_TRUE(eventually([&] { return isDropped.load(); })) << "Work that destroys its own queue never ends.";
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MainQueueConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WorkQueueConformance);

}  // namespace kavio::test
