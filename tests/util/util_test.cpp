#include "support/fakes/fake_device.h"
#include "util/auxiliary.h"
#include "util/event.h"
#include "util/trace.h"

#include <kavio/threads_manager.h>

#include <gmock/gmock.h>

#include <limits>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

TEST(Auxiliary, WritesDurations) {
    for (const auto& [milliseconds, text] : std::vector<std::pair<std::uint64_t, const char*>>{
             {59'999, "59.999s"},
             {3'600'000, "1h 0.000s"},
             {90'061'005, "1d 1h 1m 1.005s"},
             {std::numeric_limits<std::uint64_t>::max(), "213503982334d 14h 25m 51.615s"},
         }) {
        EXPECT_EQ(Auxiliary::durationText(milliseconds), text);
    }
}

class Threads : public testing::Test {
protected:
    const FakeDevice device;
    const InstalledPlatform installed{device.platform()};
};

TEST_F(Threads, TraceOnlyWhatIsMarkedSafeAndOnlyWhereThatIsSwitchedOn) {
    testing::internal::CaptureStderr();
    trace("Login",
          []() -> std::string { throw std::logic_error("a message that may hold secrets is not even formed"); });
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
    device.mainQueue->runAll();
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

struct Door {
    std::shared_ptr<Event<Door>> opened;
};

class Events : public Threads {
protected:
    Events() { opened = door->opened = std::make_shared<Event<Door>>(door); }

    /// One who notes `name` and then does `more`.
    void attach(
        const std::string& name, const std::function<void()>& more = [] {}) {
        opened->attach(std::make_shared<Event<Door>::Observer>(std::weak_ptr<const void>(), [this, name, more](Door&) {
            calls.push_back(name);
            more();
        }));
    }

    std::shared_ptr<Door> door = std::make_shared<Door>();
    std::shared_ptr<Event<Door>> opened;
    std::vector<std::string> calls;
};

TEST_F(Events, VisitThoseWhoWereAttachedWhenTheyBegan) {
    attach("1", [&] { opened->detachAll(); });
    attach("2", [&] { attach("late"); });
    opened->invokeAll();
    EXPECT_THAT(calls, testing::UnorderedElementsAre("1", "2"));
}

TEST_F(Events, EndWhenTheirSenderIsGone) {
    for (const char* name : {"a", "b"}) attach(name, [&] { door.reset(); });
    opened->invokeAll();
    EXPECT_EQ(calls.size(), 1U);
}

TEST_F(Events, ReachTheMainThreadAtOnceOrThroughItsQueue) {
    attach("called");
    opened->invokeOnMainThread();
    std::thread([&] { opened->invokeOnMainThread(); }).join();
    EXPECT_THAT(calls, testing::ElementsAre("called"));
    device.mainQueue->runAll();
    EXPECT_THAT(calls, testing::ElementsAre("called", "called"));
}

}  // namespace
}  // namespace kavio::test
