#include "client.h"

#include <openssl/ssl.h>

#include <array>
#include <cstdio>
#include <optional>

namespace kavio::test {
namespace {

using namespace std::string_literals;

/// curl, talking to a sandbox by HTTP/2 unless its arguments say something else, and what it prints. What goes to the
/// standard error comes at once.
class Curl {
public:
    Curl(const sandbox::Sandbox& service, const std::string& arguments) {
        const auto command = "curl -sN --no-progress-meter --cacert " + service.authorityFile().string() +
                             " --connect-to ::" + service.address() + " " + arguments + " 2>&1";
        mOutput.reset(::popen(command.c_str(), "r"));
    }
    /// Empty at the end.
    std::string line() const {
        std::string text;
        for (int next = 0; !text.ends_with('\n') && (next = std::fgetc(mOutput.get())) != EOF;) text += char(next);
        return text;
    }

private:
    std::unique_ptr<FILE, int (*)(FILE*)> mOutput{nullptr, ::pclose};
};

const std::string time = " https://localhost/v1/time";
const std::string clock = " https://localhost/_sandbox/clock";

TEST(Http2, DelaysOneRequestOfAConnectionUntilItStops) {
    std::optional<sandbox::Sandbox> service(sandbox::Options{.http2 = true});
    service->fault("/time", {.delay = 24h});
    const Curl curl(
        *service,
        "-Z -o /dev/null -o /dev/null -w '%{stderr}%{urlnum}: %{http_code}, %{num_connects} new\n'" + time + clock);
    EXPECT_EQ(curl.line(), "1: 200, 0 new\n");
    service.reset();
    EXPECT_EQ(curl.line(), "0: 000, 1 new\n");
}

TEST(Http2, LosesOneReplyOfAConnection) {
    sandbox::Sandbox service({.http2 = true});
    for (const auto& [fault, arrived] : std::initializer_list<std::pair<sandbox::Fault, std::string>>{
             {{.drop = true}, ""}, {{.cutAfter = 5}, R"({"mes)"}}) {
        service.fault("/time", fault);
        const Curl curl(service, "-o - -o /dev/null -w ' %{exitcode}, %{num_connects} new\n'" + time + clock);
        EXPECT_EQ(curl.line(), arrived + " 92, 1 new\n") << "the error of one stream";
        EXPECT_EQ(curl.line(), " 0, 0 new\n");
    }
}

TEST(Http2, SendsLargeBodiesAndNone) {
    Client client({.http2 = true});
    client.service.fault("/time", {.padTo = 1'000'000});
    EXPECT_EQ(client.send("GET", "/v1/time?").body.size(), 1'000'000U);
    EXPECT_EQ(Curl(client.service, "-I -o /dev/null -w '%{http_code}\n'" + time).line(), "405\n");
}

TEST(Http2, StreamsEvents) {
    std::optional<Client> client(sandbox::Options{.http2 = true});
    const Curl events(client->service, "https://localhost/_sandbox/events");
    client->ok("PUT", "/_sandbox/clock", {{"isStopped", true}});
    std::string line;
    do line = events.line();
    while (!line.empty() && line.find(R"("isStopped":true)") == std::string::npos);
    EXPECT_NE(line, "");
    client.reset();
}

TEST(Http2, LimitsRequests) {
    Client client({.http2 = true});
    const auto text = [](std::size_t size) { return json(std::string(size - 2, 'x')); };  // between quotation marks
    EXPECT_EQ(client.send("POST", "/v1/none", text(1 << 20)).status, 404);
    EXPECT_EQ(client.send("POST", "/v1/none", text((1 << 20) + 1)).status, 413);
    EXPECT_EQ(client.send("POST", "/v1/none", nullptr, {{"long", std::string(40'000, 'x')}}).status, 0);
}

TEST(Http2, RefusesClientsWithoutIt) {
    const sandbox::Sandbox service({.http2 = true});
    for (const auto& [offer, end] :
         std::map<std::string, const char*>{{"--http1.1", "35"}, {"--no-alpn", "35"}, {"", "0"}})
        EXPECT_EQ(Curl(service, offer + " -o /dev/null -w '%{exitcode}\n'" + time).line(), std::string(end) + "\n");
}

/// A TLS client that sends whatever it is told to.
class RawClient {
public:
    explicit RawClient(const sandbox::Sandbox& service) {
        const std::string offer = "\x02h2";
        mStream.reset(BIO_new_ssl_connect(mContext.get()));
        SSL* tls = nullptr;
        BIO_get_ssl(mStream.get(), &tls);
        SSL_set_alpn_protos(tls, reinterpret_cast<const unsigned char*>(offer.data()), unsigned(offer.size()));
        BIO_set_conn_hostname(mStream.get(), service.address().c_str());
        EXPECT_EQ(BIO_do_connect(mStream.get()), 1);
    }
    /// The error in the server's farewell; absent if it closes the connection without.
    std::optional<int> farewell(const std::string& sent) {
        BIO_write(mStream.get(), sent.data(), int(sent.size()));
        std::string received;
        std::array<char, 4096> bytes;
        for (int size = 0; (size = BIO_read(mStream.get(), bytes.data(), int(bytes.size()))) > 0;)
            received.append(bytes.data(), std::size_t(size));
        const auto byte = [&](std::size_t at) { return std::size_t(static_cast<unsigned char>(received.at(at))); };
        constexpr std::size_t head = 9, goAway = 7;
        for (std::size_t at = 0; at < received.size(); at += head + (byte(at) << 16 | byte(at + 1) << 8 | byte(at + 2)))
            if (byte(at + 3) == goAway) return int(byte(at + head + 7));
        return std::nullopt;
    }

private:
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> mContext{SSL_CTX_new(TLS_client_method()), SSL_CTX_free};
    std::unique_ptr<BIO, decltype(&BIO_free_all)> mStream{nullptr, BIO_free_all};
};

TEST(Http2, TakesLeaveOfClientsThatAreIdleOrNotInOrder) {
    const sandbox::Sandbox service({.http2 = true, .idleLimit = 1s});
    const auto start = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n\0\0\0\4\0\0\0\0\0"s;
    const auto noWindow = start + "\0\0\6\4\0\0\0\0\0\0\4\0\0\0\0"s;
    const auto request = "\0\0\x05\1\5\0\0\0\1\x82\x87\x84\x41\0"s;  // GET https:///
    struct Case {
        const char* what;
        std::string sent;
        std::optional<int> error;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"idle", start, 0},
             {"takes no reply", noWindow + request, 0},
             {"another protocol", "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n", std::nullopt},
             {"data of no stream", start + "\0\0\1\0\0\0\0\0\0x"s, 1},
             {"a header that is not in the table", start + "\0\0\1\1\5\0\0\0\1\xff"s, 9},
             {"too long a frame", start + "\xff\xff\xff\0\0\0\0\0\1"s, 6},
         }) {
        EXPECT_EQ(RawClient(service).farewell(c.sent), c.error) << c.what;
    }
    EXPECT_EQ(Curl(service, "-o /dev/null -w '%{http_code}\n'" + clock).line(), "200\n");
}

}  // namespace
}  // namespace kavio::test
