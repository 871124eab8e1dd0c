#pragma once

// What sessions promise.
//   INSTANTIATE_TEST_SUITE_P(Mine, SessionConformance, testing::Values(port));
//   INSTANTIATE_TEST_SUITE_P(Mine, UrlSessionWireConformance, testing::Values(port));
// The first takes the ordinary session and the background session, whichever the port has, and judges what both of them
// promise. The second judges what an ordinary session says on real connections, byte for byte.

#include <kavio/testing/conformance/sessions.h>
#include <kavio/testing/conformance/url_session_wire.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <tuple>
#include <vector>

namespace kavio::test {

/// What both kinds of session promise.
class SessionConformance : public SessionFixture {};

TEST_P(SessionConformance, CompletesEachRequestOnceAndNeverInsideTheCall) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        auto& fine = send(manner, post(serviceUrl + std::string("/fine"), "body"));
        auto& refused = send(manner, get("no URL"));
        EXPECT_EQ(endOf(fine), "200 ok") << "A request that is answered ends with its reply.";
        EXPECT_EQ(endOf(refused), "-1000 unsent") << "What is not a URL is refused.";
        EXPECT_TRUE(peer().runUntil([&] { return fine.isReleased() && refused.isReleased(); }))
            << "A completion must be released when it has returned.";
    }
}

TEST_P(SessionConformance, GivesEveryStatusAsAReply) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        for (const int status : {200, 302, 401, 404, 500, 503}) {
            peer().serve(Conduct::ANSWERS, {status, "body"});
            EXPECT_EQ(fetched(manner, get(serviceUrl)), std::to_string(status) + " body")
                << "Every HTTP status is a reply, not an error.";
        }
    }
}

TEST_P(SessionConformance, RefusesWhatIsNotARequestAndSendsNothing) {
    const std::string url = serviceUrl;
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        for (const auto& request : {
                 get("http://service.test/"),
                 get("ftp://service.test/"),
                 get("file:///etc/passwd"),
                 get(""),
                 get("https://service test/"),
                 get(url + std::string("/\0", 2)),
                 UrlRequest{"GET", url, {{"lang", "de\r\nX: injected"}}, {}},
                 UrlRequest{"GET", url, {{"lang\nX", "injected"}}, {}},
                 UrlRequest{"GET", url, {{std::string("la\0ng", 5), "de"}}, {}},
                 UrlRequest{"GET", url, {{"lang", std::string("de\0", 3)}}, {}},
                 UrlRequest{"GET / HTTP/1.1\r\nX:", url, {}, {}},
             }) {
            EXPECT_EQ(fetched(manner, request), "-1000 unsent")
                << "Only an https URL is fetched, and neither URL, method nor headers may smuggle anything in: \""
                << request.url << "\"";
        }
    }
    EXPECT_THAT(peer().seen(), testing::IsEmpty()) << "A request that must be refused has reached the service.";
}

TEST_P(SessionConformance, NeverSendsAgainWhatIsToBeSentOnce) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        for (const auto& [conduct, path, reason] : std::vector<std::tuple<Conduct, std::string, std::string>>{
                 {Conduct::DROPS, "/dropped", "-1005"},
                 {Conduct::CUTS, "/cut", manner == Manner::ORDINARY ? "-1005" : "-1005 with 200"},
             }) {
            peer().serve(conduct);
            const auto before = peer().seen().size();
            const auto ended = fetched(manner, post(serviceUrl + path, "order"));
            EXPECT_EQ(ended, reason) << "A reply that was lost with its connection must end the request with "
                                        "networkConnectionLost, and it may have been sent.";
            peer().serve(Conduct::ANSWERS);
            fetched(manner, get(serviceUrl));  // what would be sent again would have come by now
            const auto seen = peer().seen();
            EXPECT_EQ(
                std::count(seen.begin() + static_cast<std::ptrdiff_t>(before), seen.end(), "POST " + path + " order"),
                1)
                << "A request that is to be sent ONCE must reach the service exactly once: whoever sends it again when "
                   "its connection is lost places an order twice.";
        }
    }
}

TEST_P(SessionConformance, GivesUpWhatTakesTooLong) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        auto request = post(serviceUrl + std::string("/stall"), "body");
        peer().serve(Conduct::SILENT);
        request.timeout = std::chrono::seconds(1);
        EXPECT_EQ(fetched(manner, request), "-1001 unsent")
            << "A service that says nothing must end the request with timedOut; nothing was sent to it.";
        peer().serve(Conduct::STALLS);
        const auto before = peer().seen().size();
        std::size_t times = 0;
        // On a busy machine, the time may run out before the service has the request.
        for (; peer().seen().size() == before && request.timeout < patience; request.timeout *= 2) {
            EXPECT_EQ(fetched(manner, request).substr(0, 5), "-1001")
                << "A service that never answers must end the request with timedOut.";
            ++times;
        }
        EXPECT_THAT(peer().seen().size() - before, testing::AllOf(testing::Ge(1U), testing::Le(times)))
            << "A request that is to be sent ONCE was sent again after it had timed out.";
    }
}

TEST_P(SessionConformance, LimitsTheSizeOfReplies) {
    const std::string whole(UrlSession::maximumReplyBytes, 'w');
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        peer().serve(Conduct::ANSWERS, {200, whole});
        EXPECT_TRUE(fetched(manner, get(serviceUrl)) == "200 " + whole) << "A reply of the maximum size must arrive.";
        peer().serve(Conduct::ANSWERS, {200, whole + "w"});
        EXPECT_EQ(fetched(manner, get(serviceUrl)).substr(0, 5), "-1103")
            << "A reply over the maximum size must end the request with dataLengthExceedsMaximum.";
    }
}

TEST_P(SessionConformance, SaysThatNothingWasSentToAServiceThatIsGone) {
    manners();  // makes the sessions
    peer().serve(Conduct::GONE);
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        EXPECT_EQ(fetched(manner, post(serviceUrl, "order")), "-1004 unsent")
            << "With a route, a service that refuses the connection ends the request at once with "
               "cannotConnectToHost, and nothing was sent; a background session does not wait for it.";
    }
}

TEST_P(SessionConformance, CancelsWhatIsOpenWhenItIsDestroyed) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        peer().serve(Conduct::STALLS);
        const auto before = peer().seen().size();
        std::vector<Watched*> open;
        open.reserve(4);
        for (int i = 0; i < 3; ++i) open.push_back(&send(manner, post(serviceUrl + std::string("/open"), "body")));
        EXPECT_TRUE(peer().runUntil([&] { return peer().seen().size() == before + open.size(); }))
            << "Requests must reach the service side by side.";
        destroy(manner);
        for (const auto* watched : open)
            EXPECT_EQ(watched->ended(), "-999")
                << "Destroying a session must complete what is open with cancelled before it returns.";
    }
}

TEST_P(SessionConformance, MayBeDestroyedInsideACompletion) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        peer().serve(Conduct::STALLS);
        std::vector<Watched*> open;
        open.reserve(4);
        for (int i = 0; i < 3; ++i) open.push_back(&send(manner, post(serviceUrl, "body")));
        open.push_back(&send(manner, get("no URL"), [&, manner] { destroy(manner); }));
        for (const auto* watched : open) {
            EXPECT_THAT(endOf(*watched), testing::AnyOf("-999", "-999 unsent", "-1000 unsent"))
                << "A completion may destroy its session; what is open is then cancelled.";
        }
    }
}

TEST_P(SessionConformance, MayBeginARequestInsideACompletion) {
    for (const auto manner : manners()) {
        SCOPED_TRACE(nameOf(manner));
        std::atomic<Watched*> second = nullptr;
        send(manner, get(serviceUrl), [&, manner] { second = &send(manner, get(serviceUrl)); });
        EXPECT_TRUE(peer().runUntil([&] { return second != nullptr && second.load()->isCompleted(); }))
            << "A completion may begin another request.";
    }
}

TEST_P(SessionConformance, SaysWhenThereIsNoRoute) {
    if (!GetParam().withoutRoute) GTEST_SKIP() << "The port has no way to take the route away.";
    const bool isPermitted = GetParam().withoutRoute([&] {
        peer().loseRoute();
        if (!session()) return;
        EXPECT_EQ(fetched(Manner::ORDINARY, get(serviceUrl)), "-1009 unsent")
            << "Without a route to the network, an ordinary request ends with notConnectedToInternet.";
        peer().makeRoute();
        EXPECT_EQ(fetched(Manner::ORDINARY, get(serviceUrl)), "200 ok")
            << "Once there is a route, requests must reach the service.";
    });
    if (!isPermitted) GTEST_SKIP() << "To be without a route needs privileges.";
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SessionConformance);

}  // namespace kavio::test
