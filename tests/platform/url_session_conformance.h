#pragma once

// What every implementation of UrlSession must do. A port instantiates the suite with a factory of its own:
//   INSTANTIATE_TEST_SUITE_P(Linux, UrlSessionConformance, testing::Values(&makeUrlSession));

#include "platform/test_host.h"
#include "support/certificates.h"
#include "support/raw_server.h"

#include <kavio/platform/url_session.h>

#include <gmock/gmock.h>
#include <zlib.h>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kavio::test {

using UrlSessionFactory = std::shared_ptr<UrlSession> (*)(const UrlSessionConfiguration&);

inline std::string gzip(const std::string& plain) {
    std::string packed(plain.size() / 500 + 1000, '\0');
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

class UrlSessionConformance : public testing::TestWithParam<UrlSessionFactory> {
protected:
    std::shared_ptr<UrlSession> session(const RawServer& server) const {
        return GetParam()(service().reaching(server.address()));
    }
};

TEST_P(UrlSessionConformance, SendsTheRequestAsItIs) {
    using testing::AllOf, testing::HasSubstr, testing::Not, testing::StartsWith;
    const std::string binary("\0\r\n\xff{}", 6);
    struct Case {
        const char* name;
        UrlRequest request;
        testing::Matcher<std::string> expected;
    };
    const Case cases[] = {
        {"query", get(host + "/a/b?c=%20d&"), StartsWith("GET /a/b?c=%20d& HTTP/1.1\r\nHost: service.test\r\n")},
        {"bodiless POST",
         {.method = "POST", .url = host + "/?q", .headers = {}, .body = {}},
         AllOf(StartsWith("POST /?q "), HasSubstr("Content-Length: 0\r\n"), Not(HasSubstr("Content-Type")))},
        {"binary body", post(host, binary),
         AllOf(HasSubstr("\r\nContent-Length: 6\r\n"), testing::EndsWith("\r\n\r\n" + binary))},
        {"large body", post(host, std::string(3'000'000, 'x')),
         AllOf(testing::SizeIs(testing::Gt(3'000'000)), Not(HasSubstr("Expect")))},
        {"own headers",
         {"DELETE", host, {{"lang", "de"}, {"Token", ""}, {"Host", "else.test"}, {"Content-Type", "a/b"}}, {}},
         AllOf(StartsWith("DELETE / "), HasSubstr("\r\nlang: de\r\n"), HasSubstr("\r\nToken:\r\n"),
               HasSubstr("\r\nContent-Type: a/b\r\n"), HasSubstr("\r\nHost: else.test\r\n"),
               Not(HasSubstr("Host: service.test")))},
        {"PUT", {"PUT", host, {}, "new"}, AllOf(StartsWith("PUT / "), testing::EndsWith("\r\n\r\nnew"))},
    };
    const RawServer server(service().identity, answering([](const auto&) { return httpReply(200, "ok"); }));
    const auto session = this->session(server);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(text(fetch(*session, c.request)), "200 ok");
        EXPECT_THAT(server.requests().back(), c.expected);
    }
    EXPECT_EQ(server.received().size(), 1u) << "connections are reused";
}

TEST_P(UrlSessionConformance, GivesEveryStatusAsAReply) {
    const std::string whole(UrlSession::maximumReplyBytes, 'w');
    const std::pair<std::string, std::string> cases[] = {
        {httpReply(200, "body"), "200 body"},
        {httpReply(200, ""), "200 "},
        {httpReply(204, ""), "204 (no body)"},
        {httpReply(404, "none"), "404 none"},
        {httpReply(401, "", "WWW-Authenticate: Basic\r\n"), "401 "},
        {httpReply(417, "again"), "417 again"},
        {httpReply(500, "{}"), "500 {}"},
        {httpReply(302, "over there", "Location: https://else.test/\r\n"), "302 over there"},
        {"HTTP/1.1 100 Continue\r\n\r\n" + httpReply(200, "late"), "200 late"},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nwiki\r\n0\r\nTrailer: t\r\n\r\n", "200 wiki"},
        {httpReply(200, gzip("packed packed"), "Content-Encoding: gzip\r\n"), "200 packed packed"},
        {httpReply(200, whole), "200 " + whole},
    };
    for (const auto& c : cases) {
        const std::string& expected = c.second;
        SCOPED_TRACE(expected.substr(0, 20));
        const RawServer server(service().identity, answering([&](const auto&) { return c.first; }));
        EXPECT_TRUE(text(fetch(*session(server), get(host))) == expected);
    }
}

TEST_P(UrlSessionConformance, GivesTheHeadersOfTheReply) {
    const RawServer server(service().identity, answering([](const auto&) {
                               return httpReply(200, "", "Set-Cookie: a\r\nX:  b c \r\nset-cookie:\r\n");
                           }));
    const auto outcome = fetch(*session(server), get(host));
    EXPECT_EQ(std::get<UrlReply>(outcome).headers,
              (HeaderFields{{"Set-Cookie", "a"}, {"X", "b c"}, {"set-cookie", ""}, {"Content-Length", "0"}}));
}

TEST_P(UrlSessionConformance, EndsAReplyThatIsTooLarge) {
    const std::string head = "HTTP/1.1 200 OK\r\n";
    const std::string megabyte = std::string(1 << 20, 'x');
    struct Case {
        const char* name;
        std::string start;
        std::string again;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"body of known length", head + "Content-Length: 33554433\r\n\r\n", megabyte},
             {"body without end", head + "Transfer-Encoding: chunked\r\n\r\n", "100000\r\n" + megabyte + "\r\n"},
             {"little that unpacks to much",
              httpReply(200, gzip(std::string(33 << 20, '0')), "Content-Encoding: gzip\r\n"), ""},
             {"header without end", head + "X: ", megabyte},
             {"headers without end", head, "X: " + std::string(1000, 'x') + "\r\n"},
             {"interim replies without end", "", "HTTP/1.1 100 Continue\r\n\r\n"},
         }) {
        SCOPED_TRACE(c.name);
        const RawServer server(service().identity, [&](RawServer::Connection& connection) {
            if (!connection.handshake() || connection.readRequest().empty()) return;
            connection.send(c.start);
            while (connection.send(c.again.empty() ? " " : c.again)) {
            }
        });
        EXPECT_EQ(text(fetch(*session(server), get(host))), "-1103 The reply is too large.");
    }
}

TEST_P(UrlSessionConformance, FollowsRedirectsOnlyOfRepeatableRequestsAndWithinTheOrigin) {
    struct Case {
        const char* location;
        int status;
        UrlRequest request;
        std::vector<std::string> expected;  // the request lines that the server sees
    };
    auto repeatablePost = post(host + "/from", "body");
    repeatablePost.idempotency = Idempotency::REPEATABLE;
    auto once = get(host + "/from");
    once.idempotency = Idempotency::ONCE;
    const auto from = get(host + "/from");
    for (const auto& c : std::initializer_list<Case>{
             {"/to", 301, from, {"GET /from", "GET /to"}},
             {"https://SERVICE.test:443/to", 308, from, {"GET /from", "GET /to"}},
             {"/to", 303, repeatablePost, {"POST /from", "GET /to"}},
             {"/to", 302, repeatablePost, {"POST /from", "GET /to"}},
             {"/to", 307, repeatablePost, {"POST /from", "POST /to"}},
             {"/to", 307, post(host + "/from", "body"), {"POST /from"}},
             {"/to", 302, once, {"GET /from"}},
             {"https://else.test/to", 302, from, {"GET /from"}},
             {"https://service.test:444/to", 302, from, {"GET /from"}},
             {"http://service.test/to", 302, from, {"GET /from"}},
             {"/to", 304, from, {"GET /from"}},
             {"/from", 302, from, std::vector<std::string>(11, "GET /from")},
         }) {
        SCOPED_TRACE(c.location + std::to_string(c.status) + c.request.method);
        const RawServer server(service().identity, answering([&](const std::string& request) {
                                   const bool arrived = request.find(" /to ") != std::string::npos;
                                   return httpReply(arrived ? 200 : c.status, "",
                                                    "Location: " + std::string(c.location) + "\r\n");
                               }));
        const auto outcome = fetch(*session(server), c.request);
        std::vector<std::string> lines;
        for (const auto& request : server.requests()) lines.push_back(request.substr(0, request.find(" HTTP/")));
        EXPECT_EQ(lines, c.expected);
        EXPECT_EQ(std::get<UrlReply>(outcome).status, c.expected.back() == c.expected.front() ? c.status : 200);
    }
}

TEST_P(UrlSessionConformance, RefusesAHostThatCannotProveWhoItIs) {
    struct Case {
        Identity identity;
        const char* reason;
    };
    for (const auto& c : {
             Case{service().authority.issue("service.test", std::chrono::hours(-1)), "expired"},
             Case{service().authority.issue("else.test"), "another host"},
             Case{selfSigned("service.test"), "self-signed"},
             Case{CertificateAuthority().issue("service.test"), "issuer|signature"},
         }) {
        SCOPED_TRACE(c.reason);
        const RawServer server(c.identity, answering([](const auto&) { return httpReply(200, ""); }));
        EXPECT_THAT(text(fetch(*session(server), get(host))),
                    testing::ContainsRegex("^-1202 The .*(" + std::string(c.reason) + ").*\\.$"));
        EXPECT_EQ(server.received(), std::vector<std::string>{""});
    }
}

TEST_P(UrlSessionConformance, NamesWhyNoReplyCame) {
    using Connection = RawServer::Connection;
    struct Case {
        const char* name;
        int code;
        std::function<void(Connection&)> afterRequest;
    };
    const std::vector<Case> cases{
        {"closed without a reply", -1005, [](Connection&) {}},
        {"cut in the head", -1005, [](Connection& connection) { connection.send("HTTP/1.1 200 OK\r\nConte"); }},
        {"cut in the body", -1005,
         [](Connection& connection) { connection.send(httpReply(200, "whole").substr(0, 44)); }},
        {"cut in a chunk", -1005,
         [](Connection& connection) { connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\n"); }},
        {"no HTTP", -1011, [](Connection& connection) { connection.send("220 mail.test ESMTP\r\n"); }},
        {"not what its encoding says", -1011,
         [](Connection& connection) { connection.send(httpReply(200, "plain", "Content-Encoding: gzip\r\n")); }},
        {"silence", -1001, [](Connection& connection) { connection.stall(); }},
        {"silence in the body", -1001,
         [](Connection& connection) { connection.send(httpReply(200, "whole").substr(0, 44)), connection.stall(); }},
    };
    const RawServer server(service().identity, [&](Connection& connection) {
        if (!connection.handshake()) return;
        const std::string request = connection.readRequest();
        if (!request.empty()) cases[std::stoul(request.substr(request.find('/') + 1))].afterRequest(connection);
    });
    const auto session = this->session(server);
    std::vector<std::future<Outcome>> outcomes;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        auto request = post(host + "/" + std::to_string(i) + "?secret", "secret");
        request.timeout = std::chrono::seconds(1);
        outcomes.push_back(begin(*session, request));
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        const auto outcome = outcomes[i].get();
        EXPECT_EQ(errorCode(outcome), cases[i].code) << text(outcome);
        EXPECT_THAT(text(outcome), testing::AllOf(testing::Not(testing::HasSubstr("secret")), testing::EndsWith(".")));
    }
    EXPECT_EQ(server.requests().size(), cases.size()) << "each is sent once";
}

TEST_P(UrlSessionConformance, NamesWhyNothingCouldBeSent) {
    const RawServer silent(service().identity, [](RawServer::Connection& connection) { connection.stall(); });
    const RawServer closing(service().identity, [](RawServer::Connection&) {});
    std::string abandoned = RawServer(service().identity, [](RawServer::Connection&) {}).address();
    auto impatient = get(host);
    impatient.timeout = std::chrono::seconds(1);
    struct Case {
        std::string address;
        UrlRequest request;
        int code;
    };
    const std::string unknown = "https://" + std::string(64, 'x') + ".test/";  // too long a name to ask anybody for
    for (const auto& c : {
             Case{abandoned, get(host), -1004},
             Case{closing.address(), get(host), -1200},
             Case{silent.address(), impatient, -1001},
             Case{"", get(unknown), -1003},
             Case{"", get("http://127.0.0.1/"), -1000},
             Case{"", get("ftp://127.0.0.1/"), -1000},
             Case{"", get("127.0.0.1"), -1000},
             Case{"", get(""), -1000},
             Case{"", get("https://"), -1000},
             Case{"", get("https://service test/"), -1000},
             Case{"", get(host + std::string("/\0", 2)), -1000},
             Case{"", {"GET", host, {{"lang", "de\r\nX: injected"}}, {}}, -1000},
             Case{"", {"GET / HTTP/1.1\r\nX:", host, {}, {}}, -1000},
         }) {
        const auto outcome = fetch(*GetParam()(service().reaching(c.address)), c.request);
        EXPECT_EQ(errorCode(outcome), c.code) << c.request.url << ": " << text(outcome);
    }
}

TEST_P(UrlSessionConformance, EndsAReplyThatDripsForEver) {
    const RawServer server(service().identity, [](RawServer::Connection& connection) {
        if (!connection.handshake() || connection.readRequest().empty()) return;
        connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        while (connection.send("1\r\nx\r\n")) std::this_thread::sleep_for(std::chrono::milliseconds(100));  // its pace
    });
    auto request = get(host);
    request.timeout = std::chrono::seconds(1);
    EXPECT_EQ(errorCode(fetch(*session(server), request)), -1001);
}

/// A service that answers one request on a connection and then gives that up: what is in the way of the next request
/// there is lost. Another connection it serves.
TEST_P(UrlSessionConformance, SendsAgainOnlyWhatIsRepeatable) {
    auto onceWithoutBody = get(host);
    onceWithoutBody.idempotency = Idempotency::ONCE;
    auto repeatablePost = post(host, "body");
    repeatablePost.idempotency = Idempotency::REPEATABLE;
    constexpr std::size_t whole = 0;
    for (const auto& request :
         {post(host, "body"), post(host, std::string(500'000, 'x')), onceWithoutBody, get(host), repeatablePost}) {
        for (const std::size_t part : {std::size_t{1}, std::size_t{40}, whole}) {
            const bool once = request.idempotency == Idempotency::ONCE;
            SCOPED_TRACE(request.method + " read up to " + std::to_string(part) + (once ? " once" : " repeatable"));
            const RawServer server(service().identity, [&](RawServer::Connection& connection) {
                if (connection.number() > 0)
                    return answering([](const auto&) { return httpReply(200, "again"); })(connection);
                if (!connection.handshake() || connection.readRequest().empty()) return;
                connection.send(httpReply(200, "first"));
                part == whole ? connection.readRequest() : connection.read(part);
            });
            const auto session = this->session(server);
            ASSERT_EQ(text(fetch(*session, get(host))), "200 first");
            const auto outcome = fetch(*session, request);
            const auto received = server.received();
            if (once) {
                EXPECT_EQ(errorCode(outcome), -1005) << text(outcome);
                EXPECT_EQ(received.size() > 1 ? received[1] : "", "");
            } else {
                EXPECT_EQ(text(outcome), "200 again");
            }
        }
    }
}

TEST_P(UrlSessionConformance, CallsCompletionsOnAThreadOfItsOwn) {
    const RawServer server(service().identity, answering([](const auto&) { return httpReply(200, "ok"); }));
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

TEST_P(UrlSessionConformance, CancelsWhatIsOpenWhenItIsDestroyed) {
    const RawServer server(service().identity, [](RawServer::Connection& connection) {
        if (!connection.handshake()) return;
        if (connection.readRequest().find("/answer") != std::string::npos) connection.send(httpReply(200, "ok"));
        connection.stall();
    });
    for (const bool inACompletion : {false, true}) {
        SCOPED_TRACE(inACompletion);
        auto session = this->session(server);
        std::vector<std::string> outcomes;
        const auto note = [&](const Outcome& outcome) { outcomes.push_back(text(outcome).substr(0, 5)); };
        for (int i = 0; i < 3; ++i) session->dataTask(post(host + "/stall", "body"), note);
        if (inACompletion) {
            std::promise<void> ended;
            session->dataTask(get(host + "/answer"), [&](const Outcome&) {
                session.reset();
                ended.set_value();
            });
            ended.get_future().get();
        }
        session.reset();
        EXPECT_EQ(outcomes, std::vector<std::string>(3, "-999 "));
    }
}

}  // namespace kavio::test
