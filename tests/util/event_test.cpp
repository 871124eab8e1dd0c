#include "util/event.h"

#include "support/fakes/fake_device.h"

#include <gmock/gmock.h>

#include <thread>
#include <vector>

namespace kavio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

struct Door {
    virtual ~Door() = default;
    std::shared_ptr<Event<Door>> opened;
};
struct GardenDoor : Door {};

class EventTest : public testing::Test {
protected:
    EventTest() { door->opened = std::make_shared<Event<Door>>(door); }

    /// An observer that logs `name` and then does `more`.
    Event<Door>::ObserverPointer observer(
        std::string name, std::function<void()> more = [] {}, std::shared_ptr<int> owner = nullptr) {
        return std::make_shared<Event<Door>::Observer>(owner ? owner : subscriber, [this, name, more](Door& sender) {
            EXPECT_EQ(&sender, sentBy);
            calls.push_back(name);
            more();
        });
    }
    Event<Door>& opened() { return *door->opened; }

    std::shared_ptr<Door> door = std::make_shared<GardenDoor>();
    const Door* sentBy = door.get();
    std::shared_ptr<int> subscriber = std::make_shared<int>(1);
    std::vector<std::string> calls;
};

TEST_F(EventTest, CallsEachObserverAtEachInvocationAndAOneShotOnce) {
    EXPECT_EQ(opened().name(), "GardenDoor") << "after the sender's own type";
    const auto stays = observer("stays");
    opened().attach(stays);
    opened().attach(stays);
    opened().attachOnce(observer("once"));
    EXPECT_EQ(opened().count(), 2U);
    opened().invokeAll();
    opened().invokeAll();
    EXPECT_THAT(calls, UnorderedElementsAre("stays", "stays", "once"));
    EXPECT_EQ(opened().count(), 1U);
}

TEST_F(EventTest, VisitsThoseWhoWereAttachedWhenItBegan) {
    const auto late = observer("late");
    const auto first = observer("1", [&] { opened().detachAll(); });
    opened().attach(first);
    opened().attach(observer("2", [&] { opened().attach(late); }));
    opened().invokeAll();
    EXPECT_THAT(calls, UnorderedElementsAre("1", "2"));

    calls.clear();
    opened().detach(first);
    opened().attach(late);
    opened().invokeAll();
    EXPECT_THAT(calls, ElementsAre("late"));
}

TEST_F(EventTest, DetachesByOwner) {
    const auto other = std::make_shared<int>(2);
    opened().attach(observer("mine"));
    opened().attach(observer(
        "other's", [] {}, other));
    opened().detach(subscriber.get());
    opened().invokeAll();
    EXPECT_THAT(calls, ElementsAre("other's"));
}

TEST_F(EventTest, EndsWhenTheSenderIsGone) {
    const auto event = door->opened;
    for (const char* name : {"a", "b"}) event->attach(observer(name, [&] { door.reset(); }));
    event->invokeAll();
    EXPECT_EQ(calls.size(), 1U) << "an action has dropped it";
}

TEST_F(EventTest, ReachesTheMainThreadAtOnceOrThroughItsQueue) {
    const FakeDevice device;
    const InstalledPlatform installed(device.platform());
    opened().attach(observer("called"));
    opened().invokeOnMainThread();
    std::thread([&] { opened().invokeOnMainThread(); }).join();
    EXPECT_THAT(calls, ElementsAre("called"));
    device.mainQueue->runAll();
    EXPECT_THAT(calls, ElementsAre("called", "called"));
}

}  // namespace
}  // namespace kavio::test
