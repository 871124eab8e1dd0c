#include "platform/linux/url_session.h"
#include "platform/test_host.h"

#include <kavio/testing/eventually.h>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <sstream>

namespace kavio::test {
namespace {

using Download = std::variant<UrlReply, UrlError>;

std::shared_ptr<BackgroundUrlSession> sessionWith(const RawServer& server) {
    return makeBackgroundUrlSession(service().reaching(server.address()));
}

/// "STATUS BODY" or "-1005 with STATUS", and "unsent" if nothing can have left.
std::string download(const Download& outcome) {
    std::ostringstream text;
    if (const auto* error = std::get_if<UrlError>(&outcome)) {
        text << error->code << " with " << error->status.value_or(0) << (error->mayHaveBeenSent ? "" : " unsent");
    } else {
        const auto& reply = std::get<UrlReply>(outcome);
        text << reply.status << " " << reply.body.value_or("");
    }
    return text.str();
}

struct Begun {
    std::shared_ptr<DownloadTask> task;
    std::future<std::string> outcome;
};

Begun begin(BackgroundUrlSession& session, UrlRequest request) {
    auto promise = std::make_shared<std::promise<std::string>>();
    auto outcome = promise->get_future();
    auto task = session.downloadTask(std::move(request),
                                     [promise](const Download& ended) { promise->set_value(download(ended)); });
    return {std::move(task), std::move(outcome)};
}

std::string place(BackgroundUrlSession& session, UrlRequest request) {
    return begin(session, std::move(request)).outcome.get();
}

TEST(BackgroundUrlSession, SendsOnceAndGivesTheReplyOrWhatIsKnownOfIt) {
    struct Case {
        const char* expected;
        Ending ending;
    };
    const std::vector<Case> cases{
        {"200 placed", sending(httpReply(200, "placed"))},
        {"204 ", sending(httpReply(204, ""))},
        {"302 ", sending(httpReply(302, "", "Location: /to\r\n"))},
        {"-1005 with 0", sending("")},
        {"-1005 with 0", sending("HTTP/1.1 100 Continue\r\n\r\n")},
        {"-1005 with 200", sending(httpReply(200, "placed").substr(0, 44))},
    };
    const HostServer server(endingAs(cases));
    const auto session = sessionWith(server);
    std::vector<std::future<std::string>> outcomes;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        // Which of the two makes no difference to this session.
        const auto idempotency = i % 2 == 0 ? Idempotency::ONCE : Idempotency::REPEATABLE;
        outcomes.push_back(begin(*session, post(host + "/" + std::to_string(i), "order", idempotency)).outcome);
    }
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(outcomes[i].get(), cases[i].expected) << i;
    EXPECT_EQ(server.requests().size(), cases.size()) << "each is sent once";
    EXPECT_EQ(server.received().size(), cases.size()) << "each has its own connection";
}

TEST(BackgroundUrlSession, GivesUpAReplyThatStalls) {
    const HostServer server(meeting([](Connection& connection, const std::string&) {
        stallingAfter(httpReply(401, "placed").substr(0, 44))(connection);
        return false;
    }));
    const auto session = sessionWith(server);
    auto request = post(host, "order");
    std::string outcome = "-1001 with 0";  // on a busy machine, the time may run out before there is a connection
    for (request.timeout = std::chrono::seconds(1); outcome == "-1001 with 0" && request.timeout < patience;
         request.timeout *= 2)
        outcome = begin(*session, request).outcome.get();
    EXPECT_EQ(outcome, "-1001 with 401");
}

TEST(BackgroundUrlSession, DoesNotTryAgainOnceAConnectionWasMade) {
    for (const auto& [read, expected] : std::vector<std::pair<int, const char*>>{
             {-1, "-1200 with 0 unsent"}, {0, "-1005 with 0"}, {40, "-1005 with 0"}}) {
        const HostServer server([count = read](Connection& connection) {
            if (count >= 0 && connection.handshake()) connection.read(static_cast<std::size_t>(count));
        });
        EXPECT_EQ(place(*sessionWith(server), post(host, std::string(500'000, 'x'))), expected);
        EXPECT_EQ(server.received().size(), 1U) << "cut off after " << read << " bytes";
    }
    EXPECT_EQ(place(*makeBackgroundUrlSession(service().reaching(abandonedAddress())), post(host, "order")),
              "-1004 with 0 unsent");
}

TEST(BackgroundUrlSession, GivesUpOnlyWhatHasNotLeft) {
    std::promise<void> givenUp, heard, refused;
    const HostServer server([&](Connection& connection) {
        if (connection.number() == 0) return givenUp.get_future().wait();
        connection.handshake();
        connection.readRequest();
        heard.set_value();
        refused.get_future().wait();
        connection.send(httpReply(200, "placed"));
    });
    const auto session = sessionWith(server);
    auto early = begin(*session, post(host, "early"));
    ASSERT_TRUE(eventually([&] { return server.received().size() == 1; })) << "connected";
    EXPECT_TRUE(early.task->cancel());
    EXPECT_TRUE(early.task->cancel()) << "as often as one likes";
    EXPECT_EQ(early.outcome.get(), "-999 with 0 unsent");
    givenUp.set_value();

    auto late = begin(*session, post(host, "late"));
    heard.get_future().wait();
    EXPECT_FALSE(late.task->cancel());
    refused.set_value();
    EXPECT_EQ(late.outcome.get(), "200 placed");
    EXPECT_FALSE(late.task->cancel());
    EXPECT_EQ(server.requests().size(), 1U);
}

/// Whichever comes first, the network thread or giving up: a request that was given up never arrives, and every other
/// one does.
TEST(BackgroundUrlSession, AgreesWithTheServiceOnWhatWasGivenUp) {
    const HostServer server(answering(httpReply(200, "placed")));
    auto session = sessionWith(server);
    std::size_t sent = 0;
    for (int i = 0; i < 200; ++i) {
        auto order = begin(*session, post(host, "order"));
        order.outcome.wait_for(std::chrono::microseconds(i * 20));  // to give up at all stages
        const bool cancelled = order.task->cancel();
        EXPECT_EQ(order.outcome.get(), cancelled ? "-999 with 0 unsent" : "200 placed");
        sent += cancelled ? 0 : 1;
    }
    EXPECT_EQ(server.requests().size(), sent);
    auto last = begin(*session, post(host, "order"));
    session.reset();
    EXPECT_EQ(last.outcome.get().substr(0, 11), "-999 with 0");
    last.task->cancel();
}

TEST(BackgroundUrlSession, TellsWhenTheLastOpenTaskIsDone) {
    const HostServer server(answering(httpReply(200, "placed")));
    const auto session = sessionWith(server);
    std::vector<std::string> events;
    std::promise<void> delivered;
    session->onEventsDelivered([&] {
        events.emplace_back("delivered");
        delivered.set_value();
    });
    const auto note = [&](const Download& outcome) { events.push_back(download(outcome)); };
    session->downloadTask(post(host, "order"), [&](const Download& outcome) {
        note(outcome);
        session->downloadTask(post(host, "order"), note);
    });
    delivered.get_future().wait();
    EXPECT_EQ(events, (std::vector<std::string>{"200 placed", "200 placed", "delivered"}));
}

TEST(BackgroundUrlSession, NeedsNoDiskForAReply) {
    const HostServer server(answering(httpReply(200, "placed")));
    const auto session = sessionWith(server);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit none{0, before.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_EQ(place(*session, post(host, "order")), "200 placed");
    ::setrlimit(RLIMIT_FSIZE, &before);
}

/// Runs `test` with no network but what it makes itself. False if that is not permitted.
bool inFreshNetwork(const std::function<void()>& test) {
    bool permitted = false;
    std::thread([&] {
        permitted = ::unshare(CLONE_NEWNET) == 0;
        if (permitted) test();
    }).join();
    return permitted;
}

TEST(BackgroundUrlSession, WaitsForARouteAndForNothingElse) {
    const bool permitted = inFreshNetwork([] {
        ASSERT_EQ(std::system("ip link set lo up && ip route add unreachable 192.0.2.1"), 0);
        const auto toNoHost = service().reaching("192.0.2.1:443");
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(toNoHost), get(host))), -1009) << "no route at all";
        ASSERT_EQ(std::system("ip route add default dev lo"), 0);
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(toNoHost), get(host))), -1004);
        EXPECT_EQ(place(*makeBackgroundUrlSession(toNoHost), post(host, "order")), "-1004 with 0 unsent");
    });
    if (!permitted) GTEST_SKIP() << "a fresh network needs privileges";
}

TEST(BackgroundUrlSession, WaitsForTheNetwork) {
    const bool permitted = inFreshNetwork([] {
        const HostServer server(answering(httpReply(200, "placed")));
        const auto session = sessionWith(server);
        std::atomic<int> waits = 0;
        auto request = post(host, "order");
        request.willWait = [&] { ++waits; };
        auto order = begin(*session, request);
        auto lost = begin(*sessionWith(server), post(host, "lost")).outcome;
        EXPECT_EQ(lost.get(), "-999 with 0 unsent") << "waits until the session ends";
        auto givenUp = begin(*session, post(host, "given up"));
        EXPECT_TRUE(givenUp.task->cancel());
        EXPECT_EQ(givenUp.outcome.get(), "-999 with 0 unsent");
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(service().reaching(server.address())), get(host))), -1009);
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(service().reaching("")), get(host))), -1009) << "name look-up";
        ASSERT_EQ(std::system("ip link set lo up"), 0);
        EXPECT_EQ(order.outcome.get(), "200 placed");
        EXPECT_EQ(server.requests().size(), 1u);
        const int before = waits;
        EXPECT_GT(before, 0) << "said before it waited";
        EXPECT_EQ(place(*session, request), "200 placed");
        EXPECT_EQ(waits, before) << "and only then";
    });
    if (!permitted) GTEST_SKIP() << "a fresh network needs privileges";
}

}  // namespace
}  // namespace kavio::test
