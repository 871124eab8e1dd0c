#include "platform/conformance.h"
#include "support/eventually.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

class Queues : public Conformance {};
INSTANTIATE_TEST_SUITE_P(, Queues, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

TEST_P(Queues, MainThreadRunsWorkInOrderAfterItsDelayAndNeverInsideThePost) {
    std::vector<std::string> ran;
    auto& queue = *platform.mainQueue;
    const auto start = platform.clock->uptime();
    auto timer40 = start;
    const auto note = [&](const char* what) { return [&ran, what] { ran.emplace_back(what); }; };
    queue.postAfter(milliseconds(40), [&] { timer40 = platform.clock->uptime(); });
    queue.postAfter(milliseconds(20), note("timer 20"));
    queue.postAfter(milliseconds(-5), note("overdue"));
    queue.post([&] {
        ran.emplace_back("first");
        queue.post(note("posted by work"));
    });
    queue.post(note("second"));
    EXPECT_THAT(ran, IsEmpty());
    EXPECT_TRUE(runMainThread([&] { return timer40 != start; }));
    EXPECT_THAT(ran, ElementsAre("overdue", "first", "second", "posted by work", "timer 20"));
    EXPECT_GE(timer40 - start, milliseconds(40));
}

TEST_P(Queues, MainThreadIsToldFromOthersAndTakesTheirWork) {
    auto& queue = *platform.mainQueue;
    bool otherIsMain = true;
    std::vector<bool> workIsMain;
    std::thread([&] {
        otherIsMain = queue.isMainThread();
        for (int i = 0; i < 3; ++i) queue.post([&] { workIsMain.push_back(queue.isMainThread()); });
    }).join();
    EXPECT_TRUE(runMainThread([&] { return workIsMain.size() == 3; }));
    EXPECT_FALSE(otherIsMain);
    EXPECT_THAT(workIsMain, ElementsAre(true, true, true));
}

TEST_P(Queues, SerialQueueRunsOneAtATimeInOrderOnAnotherThread) {
    std::vector<int> ran;  // without a lock: two at once would be a race
    std::atomic<std::thread::id> thread;
    for (int i = 0; i < 100; ++i) platform.serialQueue->async([&, i] { ran.push_back(i); });
    platform.serialQueue->async([] { throw std::runtime_error("a block's own fault"); });
    platform.serialQueue->async([&] { thread = std::this_thread::get_id(); });
    ASSERT_TRUE(eventually([&] { return thread.load() != std::thread::id(); }));
    EXPECT_NE(thread.load(), std::this_thread::get_id());
    EXPECT_EQ(ran.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(ran));
}

TEST_P(Queues, ConcurrentQueueRunsBlocksSideBySide) {
    const auto together = std::make_shared<std::latch>(5);
    for (int i = 0; i < 4; ++i) platform.concurrentQueue->async([together] { together->arrive_and_wait(); });
    together->arrive_and_wait();
}

TEST_P(Queues, DestroyingAWorkQueueWaitsForWorkUnderWayAndDropsTheRest) {
    std::latch started(1);
    std::latch mayEnd(1);
    std::vector<std::string> ran;
    auto queue = std::move(platform.serialQueue);
    queue->async([&] {
        started.count_down();
        mayEnd.wait();
        ran.emplace_back("under way");
    });
    queue->async([&] { ran.emplace_back("dropped"); });
    // The next block goes the moment that the queue is being destroyed: then the first may end.
    queue->async([end = std::shared_ptr<void>(nullptr, [&](void*) { mayEnd.count_down(); })] {});
    started.wait();
    queue.reset();
    EXPECT_THAT(ran, ElementsAre("under way"));
}

TEST_P(Queues, ABlockMayDropTheLastReferenceToItsQueue) {
    std::latch handedOver(1);
    std::atomic<bool> isDropped = false;
    platform.serialQueue->async([&] {
        handedOver.wait();
        platform.serialQueue.reset();
        isDropped = true;
    });
    handedOver.count_down();
    EXPECT_TRUE(eventually([&] { return isDropped.load(); }));
}

}  // namespace
}  // namespace kavio::test
