#pragma once

// What a background session promises beyond what every session does (url_session.h).
//   INSTANTIATE_TEST_SUITE_P(Mine, BackgroundSessionConformance, testing::Values(port));
//   INSTANTIATE_TEST_SUITE_P(Mine, BackgroundSessionWireConformance, testing::Values(port));
// The second one judges what it says on real connections. An order is placed with this session: most of these promises
// say that it is placed at most once.

#include <kavio/testing/conformance/sessions.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kavio::test {

/// What a background session promises that takes no bytes to judge.
class BackgroundSessionConformance : public SessionFixture {
protected:
    Watched& place(const UrlRequest& request, std::function<void()> then = nullptr) {
        return send(Manner::BACKGROUND, request, std::move(then));
    }
    static bool cancel(Watched& watched) {
        return watched.calling([&] { return watched.task->cancel(); });
    }
    UrlRequest order(const std::string& name) const { return post(serviceUrl + ("/" + name), "order"); }
    std::size_t seen(const std::string& name) {
        const auto all = peer().seen();
        return std::size_t(std::ranges::count(all, "POST /" + name + " order"));
    }
};

TEST_P(BackgroundSessionConformance, SendsEverythingOnceWhateverItsIdempotency) {
    peer().serve(Conduct::DROPS);
    auto request = order("lost");
    request.idempotency = Idempotency::REPEATABLE;
    EXPECT_EQ(endOf(place(request)), "-1005") << "A lost connection must end the request.";
    peer().serve(Conduct::ANSWERS);
    EXPECT_EQ(endOf(place(order("next"))), "200 ok");
    EXPECT_EQ(seen("lost"), 1U) << "A background session never sends again what may have left.";
}

TEST_P(BackgroundSessionConformance, GivesUpWhatHasNotLeft) {
    peer().serve(Conduct::SILENT);
    auto& early = place(order("early"));
    EXPECT_TRUE(cancel(early)) << "What has not left can be given up.";
    EXPECT_TRUE(cancel(early)) << "Giving up may be asked for again, and the answer stays the same.";
    EXPECT_EQ(endOf(early), "-999 unsent") << "What was given up ends with cancelled, and nothing of it was sent.";
    peer().serve(Conduct::ANSWERS);
    EXPECT_EQ(endOf(place(order("late"))), "200 ok");
    EXPECT_EQ(seen("early"), 0U) << "A request that was given up has reached the service nevertheless.";
}

TEST_P(BackgroundSessionConformance, DoesNotGiveUpWhatMayHaveLeft) {
    peer().serve(Conduct::STALLS);
    auto& late = place(order("late"));
    ASSERT_TRUE(peer().runUntil([&] { return seen("late") == 1; })) << "The request never reached the service.";
    EXPECT_FALSE(cancel(late)) << "A request that the service has seen was said to be given up.";
    EXPECT_FALSE(late.isCompleted()) << "A request that can no longer be given up must go on to its own outcome.";
    peer().serve(Conduct::ANSWERS);
    auto& answered = place(order("answered"));
    EXPECT_EQ(endOf(answered), "200 ok");
    EXPECT_FALSE(cancel(answered)) << "A request that has been answered was said to be given up.";
    destroy(Manner::BACKGROUND);
    EXPECT_EQ(late.ended(), "-999") << "What the session's end cancels may have been sent.";
    EXPECT_FALSE(cancel(late)) << "The answer must stay the same after the session's end.";
}

TEST_P(BackgroundSessionConformance, GoesOnWithARequestWhoseTaskNobodyHolds) {
    auto& sent = place(order("unheld"));
    sent.task.reset();
    EXPECT_EQ(endOf(sent), "200 ok") << "Letting go of a task must not affect its request.";
}

TEST_P(BackgroundSessionConformance, TellsWhenTheLastOpenTaskIsDone) {
    std::atomic<int> delivered = 0;
    std::atomic<std::size_t> open = 0;
    backgroundSession()->onEventsDelivered([&] {
        EXPECT_EQ(open, 0U) << "The events were said to be delivered while a task was open.";
        ++delivered;
    });
    ++open;
    place(order("first"), [&] {
        place(order("second"), [&] { --open; });  // begun while the first is still being completed
    });
    EXPECT_TRUE(peer().runUntil([&] { return delivered == 1; }))
        << "It must be told when the last open task has been completed.";
    ++open;
    place(order("third"), [&] { --open; });
    EXPECT_TRUE(peer().runUntil([&] { return delivered == 2; })) << "It must be told each time.";
}

TEST_P(BackgroundSessionConformance, WaitsForARoute) {
    if (!GetParam().withoutRoute) GTEST_SKIP() << "The port has no way to take the route away.";
    const bool isPermitted = GetParam().withoutRoute([&] {
        peer().loseRoute();
        std::atomic<int> waits = 0;
        auto request = order("patient");
        request.willWait = [&] { ++waits; };
        auto& waiting = place(request);
        EXPECT_TRUE(peer().runUntil([&] { return waits > 0; })) << "Who waits must say so before.";
        auto& givenUp = place(order("given-up"));
        EXPECT_TRUE(cancel(givenUp)) << "What waits can be given up.";
        EXPECT_EQ(endOf(givenUp), "-999 unsent") << "What was given up while it waited was not sent.";
        EXPECT_FALSE(waiting.isCompleted()) << "Without a route, a request must wait instead of failing.";
        peer().makeRoute();
        EXPECT_EQ(endOf(waiting), "200 ok") << "What waits must be sent once there is a route.";
        EXPECT_EQ(seen("patient"), 1U) << "What has waited must be sent exactly once.";
        EXPECT_EQ(seen("given-up"), 0U) << "A request that was given up has reached the service nevertheless.";
        const int before = waits;
        EXPECT_EQ(endOf(place(request)), "200 ok");
        EXPECT_EQ(waits, before) << "Only who waits may say so.";
    });
    if (!isPermitted) GTEST_SKIP() << "To be without a route needs privileges.";
}

TEST_P(BackgroundSessionConformance, CancelsWhatWaitsWhenItIsDestroyed) {
    if (!GetParam().withoutRoute) GTEST_SKIP() << "The port has no way to take the route away.";
    const bool isPermitted = GetParam().withoutRoute([&] {
        peer().loseRoute();
        std::atomic<int> waits = 0;
        auto request = order("waits");
        request.willWait = [&] { ++waits; };
        auto& waiting = place(request);
        EXPECT_TRUE(peer().runUntil([&] { return waits > 0; })) << "Who waits must say so before.";
        destroy(Manner::BACKGROUND);
        EXPECT_EQ(waiting.ended(), "-999 unsent") << "The session's end cancels what waits, and nothing was sent.";
    });
    if (!isPermitted) GTEST_SKIP() << "To be without a route needs privileges.";
}

/// What a background session says on real connections.
class BackgroundSessionWireConformance : public testing::TestWithParam<SessionPort> {
protected:
    std::shared_ptr<BackgroundUrlSession> session(const RawServer& server) const {
        return GetParam().factory.backgroundSession(reaching(server.address()));
    }
    const std::string url = serviceUrl;
};

TEST_P(BackgroundSessionWireConformance, SendsOnceAndGivesTheReplyOrWhatIsKnownOfIt) {
    struct Case {
        const char* expected;
        Ending ending;
    };
    const std::vector<Case> cases{
        {"200 placed", sending(httpReply(200, "placed"))},
        {"302 ", sending(httpReply(302, "", "Location: /to\r\n"))},
        {"-1005", sending("")},
        {"-1005", sending("HTTP/1.1 100 Continue\r\n\r\n")},
        {"-1005 with 200", sending(httpReply(200, "placed").substr(0, 44))},
    };
    const ServiceServer server(endingAs(cases));
    const auto session = this->session(server);
    std::vector<std::future<Outcome>> outcomes;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        // Which of the two makes no difference to this session.
        const auto idempotency = i % 2 == 0 ? Idempotency::ONCE : Idempotency::REPEATABLE;
        outcomes.push_back(begin(*session, post(url + "/" + std::to_string(i), "order", idempotency)).outcome);
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(ending(outcomeOf(std::move(outcomes[i]))), cases[i].expected)
            << "A reply must arrive, a redirect is the reply, and the status of a reply that was lost must be known.";
    }
    EXPECT_EQ(server.requests().size(), cases.size()) << "Each request must be sent exactly once.";
    EXPECT_EQ(server.received().size(), cases.size()) << "Each request must have a connection of its own.";
}

TEST_P(BackgroundSessionWireConformance, GivesUpAReplyThatStalls) {
    const ServiceServer server(meeting([](Connection& connection, const std::string&) {
        stallingAfter(httpReply(401, "placed").substr(0, 44))(connection);
        return false;
    }));
    const auto session = this->session(server);
    auto request = post(url, "order");
    std::string ended = "-1001";  // on a busy machine, the time may run out before there is a connection
    for (request.timeout = std::chrono::seconds(1);
         ended.find("with") == std::string::npos && request.timeout < patience; request.timeout *= 2) {
        ended = ending(fetch(*session, request));
        EXPECT_EQ(ended.substr(0, 5), "-1001") << "A reply that stalls must end the request with timedOut.";
    }
    EXPECT_EQ(ended, "-1001 with 401") << "The status of a reply that was lost must be known.";
}

TEST_P(BackgroundSessionWireConformance, DoesNotTryAgainOnceAConnectionWasMade) {
    for (const auto& [read, expected] :
         std::vector<std::pair<int, const char*>>{{-1, "-1200 unsent"}, {0, "-1005"}, {40, "-1005"}}) {
        const ServiceServer server([count = read](Connection& connection) {
            if (count >= 0 && connection.handshake()) connection.read(static_cast<std::size_t>(count));
        });
        EXPECT_EQ(ending(fetch(*session(server), post(url, std::string(500'000, 'x')))), expected)
            << "A connection that breaks must end the request; nothing was sent before TLS was agreed on.";
        EXPECT_EQ(server.received().size(), 1U) << "A request was sent again after its connection broke.";
    }
}

/// Whichever comes first, the session's thread or giving up.
TEST_P(BackgroundSessionWireConformance, AgreesWithTheServiceOnWhatWasGivenUp) {
    const ServiceServer server(answering(httpReply(200, "placed")));
    auto session = this->session(server);
    std::size_t sent = 0;
    for (int i = 0; i < 200; ++i) {
        auto order = begin(*session, post(url, "order"));
        order.outcome.wait_for(std::chrono::microseconds(i * 20));  // to give up at all stages
        const bool cancelled = order.task->cancel();
        EXPECT_EQ(ending(outcomeOf(std::move(order.outcome))), cancelled ? "-999 unsent" : "200 placed")
            << "What was given up ends with cancelled, and everything else with its own outcome.";
        sent += cancelled ? 0 : 1;
    }
    EXPECT_EQ(server.requests().size(), sent)
        << "A request that was given up must never reach the service, and every other one must.";
    auto last = begin(*session, post(url, "order"));
    session.reset();
    EXPECT_THAT(ending(outcomeOf(std::move(last.outcome))), testing::AnyOf("-999", "-999 unsent", "200 placed"))
        << "The session's end cancels what is open.";
    last.task->cancel();
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BackgroundSessionConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BackgroundSessionWireConformance);

}  // namespace kavio::test
