#include "platform/linux/url_session.h"

#include "platform/test_host.h"

#include <tuple>

namespace kavio::test {
namespace {

TEST(UrlSession, KeepsAConnectionForQueriesAlone) {
    const ServiceServer server(answering(httpReply(200, "ok")));
    const auto session = makeUrlSession(configured(server.address()));
    for (const auto& request : {get(serviceUrl), post(serviceUrl, "order"), get(serviceUrl)}) fetch(*session, request);
    EXPECT_EQ(server.received().size(), 2U);
}

TEST(UrlSession, DoesNotContinueAHeaderOfTheReplyBefore) {
    const ServiceServer server(answering([](const std::string& request) -> std::string {
        if (request.find("/first") != std::string::npos) return httpReply(200, "ok", "X-Last: a\r\n");
        return "HTTP/1.1 200 OK\r\n continued: a\r\nContent-Length: 2\r\n\r\nok";
    }));
    const auto session = makeUrlSession(configured(server.address()));
    EXPECT_EQ(text(fetch(*session, get("https://service.test/first"))), "200 ok");
    EXPECT_EQ(text(fetch(*session, get("https://service.test/second"))), "-1011 The reply is malformed.");
}

/// In HTTP/2 a server can say that it has not looked at a request, which libcurl would then send again by itself.
TEST(UrlSessionHttp2, SendsARefusedRequestAgainOnlyIfThatIsRepeatable) {
    using namespace std::string_literals;
    const auto settings = "\0\0\0\4\0\0\0\0\0"s;
    const auto refusal = "\0\0\4\3\0\0\0\0\1\0\0\0\7"s;
    const auto goAway = "\0\0\x08\7\0\0\0\0\0\0\0\0\0\0\0\0\0"s;  // no stream was looked at
    for (const auto& [answer, idempotency, again] : std::vector<std::tuple<std::string, Idempotency, bool>>{
             {refusal, Idempotency::REPEATABLE, true},
             {refusal, Idempotency::ONCE, false},
             {goAway, Idempotency::ONCE, false},
         }) {
        const ServiceServer server(
            [&, reply = answer](Connection& connection) {
                if (!connection.handshake()) return;
                connection.send(settings);
                // Preface, settings and window of the client, then the head of the request's frame.
                if (connection.read(24 + 27 + 13 + 9).size() == 73) connection.send(reply);
                connection.stall();
            },
            "h2");
        const auto session = makeUrlSession(configured(server.address()));
        EXPECT_EQ(errorCode(fetch(*session, post(serviceUrl, "body", idempotency))), -1005);
        const auto received = server.received();
        EXPECT_EQ(received.size() > 1 && received[1].size() >= 73, again);
    }
}

}  // namespace
}  // namespace kavio::test
