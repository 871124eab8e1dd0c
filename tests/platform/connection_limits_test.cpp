#include "platform/linux/url_session.h"
#include "platform/test_host.h"

#include <condition_variable>

namespace kavio::test {
namespace {

// As docs/reliability.md says.
constexpr int mostToHost = 6;
constexpr int mostAtAll = 12;

/// A service that answers no request before it may, and keeps an eye on how many it has at once.
class Gate {
public:
    int held() const {
        const std::lock_guard lock(mMutex);
        return mHeld;
    }
    int most() const {
        const std::lock_guard lock(mMutex);
        return mMost;
    }
    void open() {
        {
            const std::lock_guard lock(mMutex);
            mIsOpen = true;
        }
        mChanged.notify_all();
    }
    void pass() {
        std::unique_lock lock(mMutex);
        mMost = std::max(mMost, ++mHeld);
        mChanged.wait(lock, [this] { return mIsOpen; });
        --mHeld;
    }

private:
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    bool mIsOpen = false;
    int mHeld = 0;
    int mMost = 0;
};

class ConnectionLimits : public ::testing::Test {
protected:
    ~ConnectionLimits() override { gate.open(); }

    bool holds(int requests) {
        return eventually([&] { return gate.held() == requests; });
    }

    Gate gate;
    const ServiceServer server{meeting([this](Connection& connection, const std::string&) {
        gate.pass();
        return connection.send(httpReply(200, "ok"));
    })};
    const std::string url = serviceUrl;
};

TEST_F(ConnectionLimits, LetManyRequestsWaitAndAllEnd) {
    const auto session = makeUrlSession(configured(server.address()));
    const auto background = makeBackgroundUrlSession(configured(server.address()));
    std::vector<std::future<Outcome>> outcomes;
    for (int i = 0; i < 40; ++i) {
        outcomes.push_back(begin(*session, i % 2 == 0 ? get(url) : post(url, "card")));
        outcomes.push_back(begin(*background, post(url, "order")).outcome);
    }
    EXPECT_TRUE(holds(2 * mostToHost));
    gate.open();
    for (auto& outcome : outcomes) EXPECT_EQ(text(outcomeOf(std::move(outcome))), "200 ok");
    EXPECT_EQ(gate.most(), 2 * mostToHost) << "six of each session";
}

TEST_F(ConnectionLimits, HoldForAllHostsTogether) {
    const auto session = makeUrlSession(configured(server.address()));
    std::vector<std::future<Outcome>> outcomes;
    for (const char* port : {":443", ":444", ":445"}) {  // other hosts, as far as connections go
        for (int i = 0; i < mostToHost; ++i) outcomes.push_back(begin(*session, post(url + port, "card")));
    }
    EXPECT_TRUE(holds(mostAtAll));
    gate.open();
    for (auto& outcome : outcomes) EXPECT_EQ(text(outcomeOf(std::move(outcome))), "200 ok");
    EXPECT_EQ(gate.most(), mostAtAll);
}

TEST_F(ConnectionLimits, LeaveAPurchaseItsOwn) {
    const auto session = makeUrlSession(configured(server.address()));
    const auto background = makeBackgroundUrlSession(configured(server.address()));
    std::vector<std::future<Outcome>> polls;
    for (int i = 0; i < 2 * mostToHost; ++i) polls.push_back(begin(*session, get(url)));
    EXPECT_TRUE(holds(mostToHost));
    auto purchase = begin(*background, post(url, "order"));
    EXPECT_TRUE(holds(mostToHost + 1));
    gate.open();
    EXPECT_EQ(text(outcomeOf(std::move(purchase.outcome))), "200 ok");
    for (auto& poll : polls) EXPECT_EQ(text(outcomeOf(std::move(poll))), "200 ok");
}

TEST_F(ConnectionLimits, LetAWaitingRequestBeGivenUp) {
    const auto session = makeBackgroundUrlSession(configured(server.address()));
    std::vector<Begun> begun;
    for (int i = 0; i < mostToHost; ++i) begun.push_back(begin(*session, post(url, "order")));
    EXPECT_TRUE(holds(mostToHost));
    auto waiting = begin(*session, post(url, "given up"));
    auto last = begin(*session, post(url, "last"));
    EXPECT_TRUE(waiting.task->cancel());
    EXPECT_EQ(ending(outcomeOf(std::move(waiting.outcome))), "-999 unsent");
    gate.open();
    for (auto& one : begun) EXPECT_EQ(text(outcomeOf(std::move(one.outcome))), "200 ok");
    EXPECT_EQ(text(outcomeOf(std::move(last.outcome))), "200 ok");
    for (const auto& request : server.requests()) EXPECT_THAT(request, testing::Not(testing::HasSubstr("given up")));
}

TEST_F(ConnectionLimits, LetTheTimeOfAWaitingRequestRun) {
    const auto session = makeUrlSession(configured(server.address()));
    std::vector<std::future<Outcome>> held;
    for (int i = 0; i < mostToHost; ++i) held.push_back(begin(*session, get(url)));
    EXPECT_TRUE(holds(mostToHost));
    auto hurried = get(url);
    hurried.timeout = std::chrono::seconds(1);
    EXPECT_EQ(ending(fetch(*session, hurried)), "-1001 unsent");
    gate.open();
    for (auto& outcome : held) EXPECT_EQ(text(outcomeOf(std::move(outcome))), "200 ok");
}

}  // namespace
}  // namespace kavio::test
