#pragma once

// What a session says on real connections, byte for byte; url_session.h includes this.

#include <kavio/testing/conformance/sessions.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kavio::test {

/// What an ordinary session says on real connections, byte for byte.
class UrlSessionWireConformance : public testing::TestWithParam<SessionPort> {
protected:
    std::shared_ptr<UrlSession> session(const RawServer& server) const {
        return GetParam().factory.session(reaching(server.address()));
    }
    const std::string url = serviceUrl;
};

TEST_P(UrlSessionWireConformance, SendsTheRequestAsItIs) {
    using testing::AllOf, testing::EndsWith, testing::HasSubstr, testing::Not, testing::StartsWith;
    const std::string binary("\0\r\n\xff{}", 6);
    const HeaderFields headers{{"lang", "de"}, {"Token", ""}, {"Host", "else.test"}, {"Content-Type", "a/b"}};
    const std::vector<std::pair<UrlRequest, testing::Matcher<std::string>>> cases{
        {get(url + "/a/b?c=%20d&"), StartsWith("GET /a/b?c=%20d& HTTP/1.1\r\nHost: service.test\r\n")},
        {{"PUT", url + "/?q", {}, {}},
         AllOf(StartsWith("PUT /?q "), HasSubstr("Content-Length: 0\r\n"), Not(HasSubstr("Content-Type")))},
        {post(url, binary), AllOf(HasSubstr("\r\nContent-Length: 6\r\n"), EndsWith("\r\n\r\n" + binary))},
        {post(url, std::string(3'000'000, 'x')),
         AllOf(EndsWith(std::string(3'000'000, 'x')), Not(HasSubstr("Expect")))},
        {{"DELETE", url, headers, {}},
         AllOf(StartsWith("DELETE / "), HasSubstr("\r\nlang: de\r\n"), HasSubstr("\r\nToken:\r\n"),
               HasSubstr("\r\nContent-Type: a/b\r\n"), HasSubstr("\r\nHost: else.test\r\n"),
               Not(HasSubstr("Host: service.test")))},
        {get(url + "/a/../b/./c"), StartsWith("GET /a/../b/./c HTTP/1.1\r\n")},
    };
    const ServiceServer server(answering(httpReply(200, "ok")));
    const auto session = this->session(server);
    for (const auto& [request, expected] : cases) {
        EXPECT_EQ(ending(fetch(*session, request)), "200 ok");
        EXPECT_THAT(server.requests().back(), expected)
            << "Method, path, query, headers and body must be sent as they are, and nothing be added to them but what "
               "HTTP needs.";
    }
}

TEST_P(UrlSessionWireConformance, ReadsRepliesInEveryForm) {
    for (const auto& [reply, expected] : std::vector<std::pair<std::string, std::string>>{
             {httpReply(401, "", "WWW-Authenticate: Basic\r\n"), "401 "},
             {httpReply(302, "over there", "Location: https://else.test/\r\n"), "302 over there"},
             {"HTTP/1.1 100 Continue\r\n\r\n" + httpReply(200, "late"), "200 late"},
             {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nwiki\r\n0\r\nTrailer: t\r\n\r\n", "200 wiki"},
             {httpReply(200, deflated("unpacked"), "Content-Encoding: deflate\r\n"), "200 unpacked"},
         }) {
        const ServiceServer server(answering(reply));
        EXPECT_EQ(ending(fetch(*session(server), get(url))), expected)
            << "Every whole reply must arrive, decoded, whatever its status and the form in which it is sent.";
    }
}

TEST_P(UrlSessionWireConformance, FollowsRedirectsOnlyOfRepeatableRequestsAndWithinTheOrigin) {
    struct Case {
        const char* location;
        int status;
        UrlRequest request;
        std::vector<std::string> expected;  // the request lines that the server sees
    };
    const auto from = get(url + "/from");
    const auto fromOnce = get(url + "/from", Idempotency::ONCE);
    const auto postFrom = post(url + "/from", "body", Idempotency::REPEATABLE);
    const auto postFromOnce = post(url + "/from", "body");
    for (const auto& [location, status, request, expected] : std::vector<Case>{
             {"/to", 301, from, {"GET /from", "GET /to"}},
             {"https://SERVICE.test:443/to", 308, from, {"GET /from", "GET /to"}},
             {"/to", 302, postFrom, {"POST /from", "GET /to"}},
             {"/to", 307, postFrom, {"POST /from", "POST /to"}},
             {"/to", 307, postFromOnce, {"POST /from"}},
             {"/to", 302, fromOnce, {"GET /from"}},
             {"https://else.test/to", 302, from, {"GET /from"}},
             {"http://service.test/to", 302, from, {"GET /from"}},
         }) {
        SCOPED_TRACE(location + std::to_string(status) + request.method);
        const auto redirect = httpReply(status, "", "Location: " + std::string(location) + "\r\n");
        const ServiceServer server(answering([&](const std::string& received) {
            return received.find(" /to ") == std::string::npos ? redirect : httpReply(200, "");
        }));
        const auto outcome = fetch(*session(server), request);
        std::vector<std::string> lines;
        for (const auto& received : server.requests()) lines.push_back(received.substr(0, received.find(" HTTP/")));
        EXPECT_EQ(lines, expected) << "A redirect is followed only for a REPEATABLE request and only within the same "
                                      "scheme, host and port.";
        EXPECT_EQ(ending(outcome), std::to_string(expected.back() == expected.front() ? status : 200) + " ")
            << "A redirect that is not followed is the reply.";
    }
}

TEST_P(UrlSessionWireConformance, EndsAnEndlessRedirect) {
    const ServiceServer server(answering(httpReply(302, "", "Location: /again\r\n")));
    EXPECT_EQ(ending(fetch(*session(server), get(url))), "302 ") << "Redirects that never end are given up.";
    EXPECT_THAT(server.requests().size(), testing::AllOf(testing::Ge(2U), testing::Le(100U)))
        << "Redirects are followed, but not for ever.";
}

TEST_P(UrlSessionWireConformance, RefusesAHostThatCannotProveWhoItIs) {
    for (const auto& [identity, fault] : std::vector<std::pair<Identity, std::string>>{
             {serviceAuthority().issue({"service.test"}, std::chrono::hours(-1)), "has expired"},
             {serviceAuthority().issue({"else.test"}), "is another host's"},
             {Authority::selfSigned({"service.test"}), "is self-signed"},
             {Authority().issue({"service.test"}), "is of an unknown authority"},
         }) {
        const RawServer server(identity, answering(httpReply(200, "")));
        EXPECT_EQ(ending(fetch(*session(server), get(url))), "-1202 unsent")
            << "A certificate that " << fault << " must end the request with serverCertificateUntrusted.";
        EXPECT_EQ(server.received(), std::vector<std::string>{""})
            << "Something was sent to a host whose certificate " << fault;
    }
}

/// `text`, `times` times over.
inline std::string repeated(const std::string& text, int times) {
    std::string all;
    for (; times > 0; --times) all += text;
    return all;
}

/// Sends the start and then an endless flood, until the client leaves.
inline Ending flooding(std::string start, std::string flood, std::chrono::milliseconds pause = {}) {
    return [start = std::move(start), flood = std::move(flood), pause](Connection& connection) {
        connection.send(start);
        while (connection.send(flood) && !connection.hearsWithin(pause)) {
        }
    };
}

TEST_P(UrlSessionWireConformance, NamesWhyNoReplyCame) {
    struct Case {
        const char* name;
        int code;
        Ending ending;
    };
    const std::string head = "HTTP/1.1 200 OK\r\n";
    const std::string chunked = head + "Transfer-Encoding: chunked\r\n\r\n";
    const std::string megabyte(1 << 20, 'x');
    const std::string encoding = "Content-Encoding: deflate\r\n";
    const std::vector<Case> cases{
        {"closed without a reply", -1005, sending("")},
        {"cut in the head", -1005, sending(head + "Conte")},
        {"cut in a chunk", -1005, sending(chunked + "9\r\n")},
        {"not what its encoding says", -1011, sending(httpReply(200, "plain", encoding))},
        {"too large a body of known length", -1103, flooding(head + "Content-Length: 33554433\r\n\r\n", megabyte)},
        {"a body without end", -1103, flooding(chunked, "100000\r\n" + megabyte + "\r\n")},
        {"little that unpacks to much", -1103, sending(httpReply(200, deflated(std::string(33 << 20, '0')), encoding))},
        {"headers without end", -1103, flooding(head, "X: " + std::string(1000, 'x') + "\r\n")},
        {"interim replies without end", -1103, flooding("", repeated("HTTP/1.1 100 Continue\r\n\r\n", 1000))},
    };
    const ServiceServer server(endingAs(cases));
    const auto session = this->session(server);
    std::vector<std::future<Outcome>> outcomes;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        outcomes.push_back(begin(*session, post(url + "/" + std::to_string(i) + "?secret", "secret")));
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        const auto outcome = outcomeOf(std::move(outcomes[i]));
        EXPECT_EQ(errorCode(outcome), cases[i].code) << "This is not why no reply came: " << text(outcome);
        EXPECT_TRUE(mayHaveBeenSent(outcome)) << "The request has reached the service, so it may have been sent.";
        EXPECT_THAT(text(outcome), testing::AllOf(testing::Not(testing::HasSubstr("secret")), testing::EndsWith(".")))
            << "The description must be a sentence that holds nothing of the request.";
    }
    EXPECT_EQ(server.requests().size(), cases.size()) << "Each request must be sent exactly once.";
}

TEST_P(UrlSessionWireConformance, SaysThatAHostIsNotFound) {
    const auto request = get("https://" + std::string(64, 'x') + ".test/");  // too long a name to look up
    EXPECT_EQ(ending(fetch(*GetParam().factory.session(reaching("")), request)), "-1003 unsent")
        << "A host that cannot be found must end the request with cannotFindHost.";
}

/// The service answers one request on its first connection and then abandons that, so that the next request there is
/// lost. It answers again from connection number `serving` on.
TEST_P(UrlSessionWireConformance, SendsAQueryOnceMoreWhenAKeptConnectionDies) {
    constexpr std::size_t whole = 0;
    for (const auto& request : {get(url + "/list?"), post(url + "/a/?b=%20", "body", Idempotency::REPEATABLE)}) {
        for (const std::size_t part : {std::size_t{1}, std::size_t{40}, whole}) {
            for (const std::size_t serving : {1, 2}) {
                SCOPED_TRACE(request.method + " read up to " + std::to_string(part) + " of " + std::to_string(serving));
                const ServiceServer server([&](Connection& connection) {
                    if (!connection.handshake()) return;
                    if (connection.number() == 0) {
                        connection.readRequest();
                        connection.send(httpReply(200, "0"));
                    }
                    part == whole || connection.number() > 0 ? connection.readRequest() : connection.read(part);
                    if (connection.number() >= serving) connection.send(httpReply(200, "again"));
                });
                const auto session = this->session(server);
                ASSERT_EQ(ending(fetch(*session, get(url))), "200 0");
                EXPECT_EQ(ending(fetch(*session, request)), serving == 1 ? "200 again" : "-1005")
                    << "A query whose kept connection dies is sent once more on another one, and then no more.";
                const auto received = server.received();
                ASSERT_EQ(received.size(), 2u) << "A query must be sent once more, and no oftener.";
                const auto lost = received[0].substr(server.requests()[0].size());
                if (lost.empty()) continue;  // this session keeps no connections
                EXPECT_EQ(received[1].substr(0, part == whole ? received[1].size() : part), lost)
                    << "What is sent once more must be the same byte for byte.";
            }
        }
    }
}

/// What a server says unasked on a connection: with the first reply, or after that has been read.
struct Unasked {
    const char* name;                   ///< shown with each failure
    std::vector<std::string> together;  ///< the first reply with what follows it, in these pieces
    Ending later;                       ///< what the server does once the reply has been read
};

/// Around a first reply whose body is "first"; what is unasked must not be taken for another.
inline std::vector<Unasked> unaskedWords() {
    const auto first = httpReply(200, "first");
    const auto wrong = httpReply(200, "wrong");
    const auto body = first.find("first");
    const auto chunked = [](const std::string& more) {
        return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nfirst\r\n0\r\n\r\n" + more;
    };
    const Ending nothing = sending("");
    return {
        {"an unasked reply", {first}, sending(wrong)},
        {"an unasked refusal", {first}, sending(httpReply(408, "", "Connection: close\r\n"))},
        {"part of one", {first}, sending(wrong.substr(0, 9))},
        {"with the reply", {first + wrong}, nothing},
        {"with the end of the reply", {first.substr(0, body), "first" + wrong}, nothing},
        {"with the reply, and behind", {first + wrong, wrong}, nothing},
        {"with a chunked reply", {chunked(wrong)}, nothing},
        {"with a chunked reply, and behind", {chunked(wrong.substr(0, 9)), wrong.substr(9)}, nothing},
        {"good-bye", {first}, [](Connection& connection) { connection.sayGoodbye(false); }},
        {"good-bye and the end", {first}, [](Connection& connection) { connection.sayGoodbye(true); }},
        {"the end", {first}, [](Connection& connection) { connection.hangUp(); }},
    };
}

TEST_P(UrlSessionWireConformance, TakesNoConnectionOnWhichMoreThanTheReplyHasArrived) {
    for (const auto& unasked : unaskedWords()) {
        for (const auto idempotency : {Idempotency::REPEATABLE, Idempotency::ONCE}) {
            SCOPED_TRACE(unasked.name + std::string(idempotency == Idempotency::ONCE ? ", once" : ""));
            std::promise<void> answered, said;
            std::atomic<bool> asked = false;
            const ServiceServer server(meeting([&](Connection& connection, const auto&) {
                const bool isFirst = connection.number() == 0 && !asked.exchange(true);
                if (!isFirst) return connection.send(httpReply(200, "right"));
                for (const auto& bytes : unasked.together) connection.send(bytes);
                answered.get_future().wait();
                unasked.later(connection);
                said.set_value();
                return true;
            }));
            const auto session = this->session(server);
            ASSERT_EQ(ending(fetch(*session, get(url))), "200 first") << "The reply must arrive without what follows.";
            answered.set_value();
            said.get_future().wait();
            EXPECT_EQ(ending(fetch(*session, get(url, idempotency))), "200 right")
                << "What a server said unasked was taken for the answer to a later request, or made it fail.";
            EXPECT_EQ(server.requests().size(), 2u) << "Each request must be sent exactly once.";
        }
    }
}

TEST_P(UrlSessionWireConformance, CallsCompletionsOnAThreadOfItsOwn) {
    const ServiceServer server(answering(httpReply(200, "ok")));
    const auto session = this->session(server);
    const auto thread = std::make_shared<std::promise<std::thread::id>>();
    session->dataTask(get(url), [thread](const Outcome&) { thread->set_value(std::this_thread::get_id()); });
    EXPECT_NE(thread->get_future().get(), std::this_thread::get_id())
        << "A completion must be called on a thread of the session.";
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(UrlSessionWireConformance);

}  // namespace kavio::test
