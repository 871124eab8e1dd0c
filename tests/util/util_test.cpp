#include "util/trace.h"

#include <kavio/testing/device.h>
#include <kavio/threads_manager.h>

#include <gmock/gmock.h>

#include <thread>
#include <vector>

namespace kavio::test {
namespace {

class Threads : public testing::Test {
protected:
    Device device;
};

TEST_F(Threads, TraceOnlyWhereThatIsSwitchedOn) {
    testing::internal::CaptureStderr();
    trace("Login", [] { return SafeMessage{"sent"}; });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), isTraceWritten() ? "1h 0.000s [Login] sent\n" : "");
}

TEST_F(Threads, RunABlockForTheMainThreadAtOnceThereAndLaterFromElsewhere) {
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
    device.run();
    EXPECT_EQ(ran, std::vector(2, std::this_thread::get_id()));
}

TEST_F(Threads, GuardBlocksByTheAddressOfTheirLock) {
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
}

}  // namespace
}  // namespace kavio::test
