#include "util/event.h"
#include "util/kavio_utils.h"
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

TEST_F(Threads, FindEveryMatchOfAPattern) {
    EXPECT_THAT(KavioUtils::matches("a(b)", "abxab"), testing::ElementsAre("ab", "ab"));
    EXPECT_THAT(KavioUtils::matches("(", "abab"), testing::IsEmpty()) << "a pattern that does not compile";
}

struct Door {
    std::shared_ptr<Event<Door>> opened;
};

TEST_F(Threads, HearOfAnEventAsLongAsTheyAreAttached) {
    auto door = std::make_shared<Door>();
    const auto event = std::make_shared<Event<Door>>(door);
    const auto owner = std::make_shared<int>();
    std::string heard;
    const auto observer = [&](
                              const std::string& name, std::function<void()> more = [] {}) {
        return std::make_shared<Event<Door>::Observer>(owner, [&heard, name, more](Door&) { heard += name, more(); });
    };
    const auto stays = observer("s");
    event->attach(stays);
    event->attach(stays);
    event->attachOnce(observer("o", [&] { event->attach(observer("l")); }));
    EXPECT_EQ(event->name() + std::to_string(event->count()), "Door2");
    std::thread([&] { event->invokeOnMainThread(); }).join();
    EXPECT_EQ(heard, "") << "posted to the main thread";
    device.run();
    event->detach(stays);
    event->invokeOnMainThread();
    EXPECT_THAT(heard, testing::AnyOf("sol", "osl"));
    event->detach(owner.get());
    event->invokeAll();
    for (const auto* name : {"a", "b"}) event->attach(observer(name, [&] { door.reset(); }));
    event->invokeAll();
    EXPECT_THAT(heard.substr(3), testing::AnyOf("a", "b")) << "until the sender is gone";
    event->detachAll();
    EXPECT_EQ(event->count(), 0U);
}

}  // namespace
}  // namespace kavio::test
