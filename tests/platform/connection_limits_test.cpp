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
    void hold(std::future<Outcome> outcome) { mOutcomes.push_back(std::move(outcome)); }
    void expectAllAnswered() {
        gate.open();
        for (auto& outcome : mOutcomes) EXPECT_EQ(text(outcomeOf(std::move(outcome))), "200 ok");
    }

    Gate gate;
    const ServiceServer server{meeting([this](Connection& connection, const std::string&) {
        gate.pass();
        return connection.send(httpReply(200, "ok"));
    })};
    const std::string url = serviceUrl;
    const std::shared_ptr<UrlSession> ordinary = makeUrlSession(configured(server.address()));
    const std::shared_ptr<BackgroundUrlSession> background = makeBackgroundUrlSession(configured(server.address()));

private:
    std::vector<std::future<Outcome>> mOutcomes;
};

TEST_F(ConnectionLimits, LetManyRequestsWaitAndAllEnd) {
    for (int i = 0; i < 40; ++i) {
        hold(begin(*ordinary, i % 2 == 0 ? get(url) : post(url, "card")));
        hold(begin(*background, post(url, "order")).outcome);
    }
    EXPECT_TRUE(holds(2 * mostToHost));
    expectAllAnswered();
    EXPECT_EQ(gate.most(), 2 * mostToHost) << "six of each session";
}

TEST_F(ConnectionLimits, HoldForAllHostsTogether) {
    for (const char* port : {":443", ":444", ":445"}) {  // other hosts, as far as connections go
        for (int i = 0; i < mostToHost; ++i) hold(begin(*ordinary, post(url + port, "card")));
    }
    EXPECT_TRUE(holds(mostAtAll));
    expectAllAnswered();
    EXPECT_EQ(gate.most(), mostAtAll);
}

TEST_F(ConnectionLimits, LetAWaitingRequestBeGivenUpOrRunOutOfTime) {
    for (int i = 0; i < mostToHost; ++i) {
        hold(begin(*ordinary, get(url)));
        hold(begin(*background, post(url, "order")).outcome);
    }
    EXPECT_TRUE(holds(2 * mostToHost));
    auto waiting = begin(*background, post(url, "given up"));
    hold(begin(*background, post(url, "last")).outcome);
    EXPECT_TRUE(waiting.task->cancel());
    EXPECT_EQ(ending(outcomeOf(std::move(waiting.outcome))), "-999 unsent");
    auto hurried = get(url);
    hurried.timeout = std::chrono::seconds(1);
    EXPECT_EQ(ending(fetch(*ordinary, hurried)), "-1001 unsent");
    expectAllAnswered();
    for (const auto& request : server.requests()) EXPECT_THAT(request, testing::Not(testing::HasSubstr("given up")));
}

}  // namespace
}  // namespace kavio::test
