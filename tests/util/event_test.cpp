#include "util/event.h"

#include "platform/current_platform.h"

#include <gmock/gmock.h>

#include <vector>

namespace kavio {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
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
        std::string name, std::function<void()> more = [] {}) {
        return std::make_shared<Event<Door>::Observer>(subscriber, [this, name, more](Door& sender) {
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

TEST_F(EventTest, IsNamedAfterTheSendersOwnType) { EXPECT_EQ(opened().name(), "GardenDoor"); }

TEST_F(EventTest, CallsEachObserverAtEachInvocationAndAOneShotOnce) {
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
    const auto second = observer("2", [&] { opened().attach(late); });
    opened().attach(first);
    opened().attach(second);
    opened().invokeAll();
    EXPECT_THAT(calls, UnorderedElementsAre("1", "2"));

    calls.clear();
    opened().detach(first);
    opened().attach(late);
    opened().invokeAll();
    EXPECT_THAT(calls, ElementsAre("late"));
}

TEST_F(EventTest, InvokesAnewInsideAnAction) {
    opened().attachOnce(observer("outer", [&] { opened().invokeAll(); }));
    opened().invokeAll();
    EXPECT_THAT(calls, ElementsAre("outer"));

    opened().attachOnce(observer("outer", [&] {
        opened().attachOnce(observer("inner"));
        opened().invokeAll();
    }));
    opened().invokeAll();
    EXPECT_THAT(calls, ElementsAre("outer", "outer", "inner"));
}

TEST_F(EventTest, DetachesByOwnerOnlyWhoseOwnerLives) {
    const auto other = std::make_shared<int>(2);
    opened().attach(observer("mine"));
    opened().attach(observer("mine too"));
    opened().attach(std::make_shared<Event<Door>::Observer>(other, [&](Door&) { calls.push_back("other's"); }));
    {
        const auto gone = std::make_shared<int>(3);
        opened().attach(std::make_shared<Event<Door>::Observer>(gone, [&](Door&) { calls.push_back("orphan's"); }));
    }
    opened().detach(subscriber.get());
    opened().detach(static_cast<const void*>(nullptr));
    opened().invokeAll();
    EXPECT_THAT(calls, UnorderedElementsAre("other's", "orphan's"));
}

TEST_F(EventTest, IsSilentOnceTheSenderIsGone) {
    const auto event = door->opened;
    event->attach(observer("never"));
    door.reset();
    event->invokeAll();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(EventTest, EndsWhenAnActionDropsTheSender) {
    for (const char* name : {"a", "b"}) opened().attach(observer(name, [&] { door.reset(); }));
    opened().invokeAll();
    EXPECT_EQ(calls.size(), 1U);
}

class DrivenQueue : public MainQueue {
public:
    void post(std::function<void()> work) override { posted.push_back(std::move(work)); }
    void postAfter(std::chrono::milliseconds, std::function<void()> work) override { post(std::move(work)); }
    bool isMainThread() const override { return isMain; }

    bool isMain = true;
    std::vector<std::function<void()>> posted;
};

TEST_F(EventTest, ReachesTheMainThreadAtOnceOrThroughItsQueue) {
    const auto queue = std::make_shared<DrivenQueue>();
    auto platform = std::make_unique<Platform>();
    platform->mainQueue = queue;
    auto former = exchangePlatform(std::move(platform));
    opened().attach(observer("called"));

    opened().invokeOnMainThread();
    EXPECT_THAT(calls, ElementsAre("called"));

    queue->isMain = false;
    opened().invokeOnMainThread();
    opened().invokeOnMainThread();
    EXPECT_THAT(calls, ElementsAre("called"));
    queue->posted.at(0)();
    EXPECT_THAT(calls, ElementsAre("called", "called"));
    door.reset();
    queue->posted.at(1)();
    EXPECT_THAT(calls, ElementsAre("called", "called"));
    exchangePlatform(std::move(former));
}

}  // namespace
}  // namespace kavio
