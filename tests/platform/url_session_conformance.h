#pragma once

// What every implementation of UrlSession must do. A port instantiates the suite with its own factory:
//   INSTANTIATE_TEST_SUITE_P(Linux, UrlSessionConformance, testing::Values(&makeUrlSession));

#include "platform/test_host.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace kavio::test {

using UrlSessionFactory = std::shared_ptr<UrlSession> (*)(const UrlSessionConfiguration&);

class UrlSessionConformance : public testing::TestWithParam<UrlSessionFactory> {
protected:
    std::shared_ptr<UrlSession> session(const RawServer& server) const {
        return GetParam()(service().reaching(server.address()));
    }
};

TEST_P(UrlSessionConformance, SendsTheRequestAsItIs) {
    using testing::AllOf, testing::EndsWith, testing::HasSubstr, testing::Not, testing::StartsWith;
    const std::string binary("\0\r\n\xff{}", 6);
    const HeaderFields headers{{"lang", "de"}, {"Token", ""}, {"Host", "else.test"}, {"Content-Type", "a/b"}};
    const std::vector<std::pair<UrlRequest, testing::Matcher<std::string>>> cases{
        {get(host + "/a/b?c=%20d&"), StartsWith("GET /a/b?c=%20d& HTTP/1.1\r\nHost: service.test\r\n")},
        {{"PUT", host + "/?q", {}, {}},
         AllOf(StartsWith("PUT /?q "), HasSubstr("Content-Length: 0\r\n"), Not(HasSubstr("Content-Type")))},
        {post(host, binary), AllOf(HasSubstr("\r\nContent-Length: 6\r\n"), EndsWith("\r\n\r\n" + binary))},
        {post(host, std::string(3'000'000, 'x')),
         AllOf(EndsWith(std::string(3'000'000, 'x')), Not(HasSubstr("Expect")))},
        {{"DELETE", host, headers, {}},
         AllOf(StartsWith("DELETE / "), HasSubstr("\r\nlang: de\r\n"), HasSubstr("\r\nToken:\r\n"),
               HasSubstr("\r\nContent-Type: a/b\r\n"), HasSubstr("\r\nHost: else.test\r\n"),
               Not(HasSubstr("Host: service.test")))},
        {get(host + "/a/../b/./c"), StartsWith("GET /a/../b/./c HTTP/1.1\r\n")},
    };
    const HostServer server(answering(httpReply(200, "ok")));
    const auto session = this->session(server);
    for (const auto& [request, expected] : cases) {
        EXPECT_EQ(text(fetch(*session, request)), "200 ok");
        EXPECT_THAT(server.requests().back(), expected);
    }
    EXPECT_EQ(server.received().size(), 5u) << "what is sent once takes a new connection, anything else a kept one";
}

TEST_P(UrlSessionConformance, GivesEveryStatusAsAReply) {
    const std::string whole(UrlSession::maximumReplyBytes, 'w');
    for (const auto& [reply, expected] : std::vector<std::pair<std::string, std::string>>{
             {httpReply(204, ""), "204 (no body)"},
             {httpReply(401, "", "WWW-Authenticate: Basic\r\n"), "401 "},
             {httpReply(302, "over there", "Location: https://else.test/\r\n"), "302 over there"},
             {"HTTP/1.1 100 Continue\r\n\r\n" + httpReply(200, "late"), "200 late"},
             {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nwiki\r\n0\r\nTrailer: t\r\n\r\n", "200 wiki"},
             {httpReply(200, deflated("unpacked"), "Content-Encoding: deflate\r\n"), "200 unpacked"},
             {httpReply(200, whole), "200 " + whole},
         }) {
        const HostServer server(answering(reply));
        EXPECT_TRUE(text(fetch(*session(server), get(host))) == expected) << expected.substr(0, 20);
    }
}

TEST_P(UrlSessionConformance, FollowsRedirectsOnlyOfRepeatableRequestsAndWithinTheOrigin) {
    struct Case {
        const char* location;
        int status;
        UrlRequest request;
        std::vector<std::string> expected;  // the request lines that the server sees
    };
    const auto from = get(host + "/from");
    const auto fromOnce = get(host + "/from", Idempotency::ONCE);
    const auto postFrom = post(host + "/from", "body", Idempotency::REPEATABLE);
    const auto postFromOnce = post(host + "/from", "body");
    for (const auto& [location, status, request, expected] : std::vector<Case>{
             {"/to", 301, from, {"GET /from", "GET /to"}},
             {"https://SERVICE.test:443/to", 308, from, {"GET /from", "GET /to"}},
             {"/to", 302, postFrom, {"POST /from", "GET /to"}},
             {"/to", 307, postFrom, {"POST /from", "POST /to"}},
             {"/to", 307, postFromOnce, {"POST /from"}},
             {"/to", 302, fromOnce, {"GET /from"}},
             {"https://else.test/to", 302, from, {"GET /from"}},
             {"http://service.test/to", 302, from, {"GET /from"}},
             {"/from", 302, from, std::vector<std::string>(11, "GET /from")},
         }) {
        SCOPED_TRACE(location + std::to_string(status) + request.method);
        const auto redirect = httpReply(status, "", "Location: " + std::string(location) + "\r\n");
        const HostServer server(answering([&](const std::string& received) {
            return received.find(" /to ") == std::string::npos ? redirect : httpReply(200, "");
        }));
        const auto outcome = fetch(*session(server), request);
        std::vector<std::string> lines;
        for (const auto& received : server.requests()) lines.push_back(received.substr(0, received.find(" HTTP/")));
        EXPECT_EQ(lines, expected);
        EXPECT_EQ(std::get<UrlReply>(outcome).status, expected.back() == expected.front() ? status : 200);
    }
}

TEST_P(UrlSessionConformance, RefusesAHostThatCannotProveWhoItIs) {
    for (const auto& [identity, reason] : std::vector<std::pair<Identity, std::string>>{
             {service().authority.issue({"service.test"}, std::chrono::hours(-1)), "expired"},
             {service().authority.issue({"else.test"}), "another host"},
             {Authority::selfSigned({"service.test"}), "self-signed"},
             {Authority().issue({"service.test"}), "issuer|signature"},
         }) {
        const RawServer server(identity, answering(httpReply(200, "")));
        const auto outcome = fetch(*session(server), get(host));
        EXPECT_THAT(text(outcome), testing::ContainsRegex("^-1202 The .*(" + reason + ").*\\.$"));
        EXPECT_FALSE(mayHaveBeenSent(outcome));
        EXPECT_EQ(server.received(), std::vector<std::string>{""});
    }
}

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

TEST_P(UrlSessionConformance, NamesWhyNoReplyCame) {
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
    const HostServer server(endingAs(cases));
    const auto session = this->session(server);
    std::vector<std::future<Outcome>> outcomes;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        outcomes.push_back(begin(*session, post(host + "/" + std::to_string(i) + "?secret", "secret")));
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto outcome = outcomes[i].get();
        EXPECT_EQ(errorCode(outcome), cases[i].code) << cases[i].name << ": " << text(outcome);
        EXPECT_TRUE(mayHaveBeenSent(outcome)) << cases[i].name;
        EXPECT_THAT(text(outcome), testing::AllOf(testing::Not(testing::HasSubstr("secret")), testing::EndsWith(".")));
    }
    EXPECT_EQ(server.requests().size(), cases.size()) << "each is sent once";
}

TEST_P(UrlSessionConformance, GivesUpWhatTakesTooLong) {
    const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (const auto& ending : {stallingAfter(""), flooding(head, "1\r\nx\r\n", std::chrono::milliseconds(100))}) {
        const HostServer server(meeting([&](Connection& connection, const std::string&) {
            ending(connection);
            return false;
        }));
        const auto session = this->session(server);
        auto request = post(host, "body");
        std::size_t times = 0;
        // On a busy machine, the time may run out before the service has the request.
        for (request.timeout = std::chrono::seconds(1); server.requests().empty() && request.timeout < patience;
             request.timeout *= 2) {
            EXPECT_EQ(text(fetch(*session, request)), "-1001 The request timed out.");
            ++times;
        }
        EXPECT_THAT(server.requests().size(), testing::AllOf(testing::Ge(1U), testing::Le(times)));
    }
}

TEST_P(UrlSessionConformance, NamesWhyNothingCouldBeSent) {
    const HostServer silent([](Connection& connection) { connection.stall(); });
    auto impatient = get(host);
    impatient.timeout = std::chrono::seconds(1);
    struct Case {
        std::string address;
        UrlRequest request;
        int code;
    };
    for (const auto& [address, request, code] : std::vector<Case>{
             {abandonedAddress(), get(host), -1004},
             {silent.address(), impatient, -1001},
             {"", get("https://" + std::string(64, 'x') + ".test/"), -1003},  // too long a name to look up
             {"", get("http://127.0.0.1/"), -1000},
             {"", get(""), -1000},
             {"", get("https://service test/"), -1000},
             {"", get(host + std::string("/\0", 2)), -1000},
             {"", {"GET", host, {{"lang", "de\r\nX: injected"}}, {}}, -1000},
             {"", {"GET / HTTP/1.1\r\nX:", host, {}, {}}, -1000},
         }) {
        const auto outcome = fetch(*GetParam()(service().reaching(address)), request);
        EXPECT_EQ(errorCode(outcome), code) << request.url << ": " << text(outcome);
        EXPECT_FALSE(mayHaveBeenSent(outcome)) << request.url;
    }
}

/// The service answers one request on its first connection and then abandons that, so that the next request there is
/// lost. It answers again from connection number `serving` on.
TEST_P(UrlSessionConformance, SendsAQueryOnceMoreWhenAKeptConnectionDies) {
    constexpr std::size_t whole = 0;
    for (const auto& request : {get(host + "/list?"), post(host + "/a/?b=%20", "body", Idempotency::REPEATABLE)}) {
        for (const std::size_t part : {std::size_t{1}, std::size_t{40}, whole}) {
            for (const std::size_t serving : {1, 2}) {
                SCOPED_TRACE(request.method + " read up to " + std::to_string(part) + " of " + std::to_string(serving));
                const HostServer server([&](Connection& connection) {
                    if (!connection.handshake()) return;
                    if (connection.number() == 0) {
                        connection.readRequest();
                        connection.send(httpReply(200, "0"));
                    }
                    part == whole || connection.number() > 0 ? connection.readRequest() : connection.read(part);
                    if (connection.number() >= serving) connection.send(httpReply(200, "again"));
                });
                const auto session = this->session(server);
                ASSERT_EQ(text(fetch(*session, get(host))), "200 0");
                EXPECT_EQ(text(fetch(*session, request)).substr(0, 9), serving == 1 ? "200 again" : "-1005 The");
                const auto received = server.received();
                ASSERT_EQ(received.size(), 2u) << "twice at most";
                const auto lost = received[0].substr(server.requests()[0].size());
                EXPECT_EQ(received[1].substr(0, part == whole ? received[1].size() : part), lost) << "byte for byte";
            }
        }
    }
}

/// What a server says unasked on a connection, before or after the answer to the first request is read.
TEST_P(UrlSessionConformance, TakesNoConnectionOnWhichMoreThanTheReplyHasArrived) {
    struct Case {
        const char* name;
        std::vector<std::string> together;
        Ending later;
    };
    const auto first = httpReply(200, "first");
    const auto wrong = httpReply(200, "wrong");
    const auto body = first.find("first");
    const auto chunked = [](const std::string& more) {
        return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nfirst\r\n0\r\n\r\n" + more;
    };
    const Ending nothing = sending("");
    for (const auto& [name, together, later] : std::vector<Case>{
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
         }) {
        for (const auto idempotency : {Idempotency::REPEATABLE, Idempotency::ONCE}) {
            SCOPED_TRACE(name + std::string(idempotency == Idempotency::ONCE ? ", once" : ""));
            std::promise<void> answered, said;
            std::atomic<bool> asked = false;
            const HostServer server(meeting([&, &now = together, &then = later](Connection& connection, const auto&) {
                const bool isFirst = connection.number() == 0 && !asked.exchange(true);
                if (!isFirst) return connection.send(httpReply(200, "right"));
                for (const auto& bytes : now) connection.send(bytes);
                answered.get_future().wait();
                then(connection);
                said.set_value();
                return true;
            }));
            const auto session = this->session(server);
            ASSERT_EQ(text(fetch(*session, get(host))), "200 first");
            answered.set_value();
            said.get_future().wait();
            EXPECT_EQ(text(fetch(*session, get(host, idempotency))), "200 right");
            EXPECT_EQ(server.requests().size(), 2u);
        }
    }
}

TEST_P(UrlSessionConformance, CallsCompletionsOnAThreadOfItsOwn) {
    const HostServer server(answering(httpReply(200, "ok")));
    const auto session = this->session(server);
    std::vector<std::thread::id> threads{std::this_thread::get_id()};
    std::promise<std::string> ended;
    session->dataTask(get(host), [&](const Outcome&) {
        threads.push_back(std::this_thread::get_id());
        session->dataTask(get("no URL"), [&](const Outcome& outcome) {
            threads.push_back(std::this_thread::get_id());
            ended.set_value(text(outcome).substr(0, 5));
        });
        EXPECT_EQ(threads.size(), 2u) << "completed before the call has returned";
    });
    EXPECT_EQ(ended.get_future().get(), "-1000");
    EXPECT_NE(threads[0], threads[1]);
    EXPECT_EQ(threads[1], threads[2]);
}

TEST_P(UrlSessionConformance, MayBeDestroyedByACompletionThatComesAtOnce) {
    const HostServer server(answering(""));
    for (int i = 0; i < 100; ++i) {
        auto session = this->session(server);
        std::promise<void> ended;
        session->dataTask(get("no URL"), [&](const Outcome&) { session.reset(), ended.set_value(); });
        ended.get_future().wait();
    }
}

TEST_P(UrlSessionConformance, CancelsWhatIsOpenWhenItIsDestroyed) {
    const HostServer server(meeting([](Connection& connection, const std::string& request) {
        if (request.find("/answer") != std::string::npos) connection.send(httpReply(200, "ok"));
        connection.stall();
        return false;
    }));
    for (const bool inACompletion : {false, true}) {
        SCOPED_TRACE(inACompletion);
        auto session = this->session(server);
        std::vector<int> outcomes;
        for (int i = 0; i < 3; ++i) {
            session->dataTask(post(host + "/stall", "body"),
                              [&](const Outcome& outcome) { outcomes.push_back(errorCode(outcome)); });
        }
        std::promise<void> ended;
        if (inACompletion) {
            session->dataTask(get(host + "/answer"), [&](const Outcome&) { session.reset(), ended.set_value(); });
            ended.get_future().get();
        }
        session.reset();
        EXPECT_EQ(outcomes, std::vector<int>(3, UrlError::cancelled));
    }
}

}  // namespace kavio::test
