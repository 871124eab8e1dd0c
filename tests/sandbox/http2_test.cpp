#include "client.h"

#include <gmock/gmock.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <array>
#include <optional>

namespace kavio::test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

constexpr long http2 = CURL_HTTP_VERSION_2TLS;
const auto time = ask("GET", "/v1/time");
const auto clock = ask("GET", "/_sandbox/clock");

TEST(Http2, DelaysOneRequestOfAConnectionUntilItStops) {
    std::optional<sandbox::Sandbox> service(sandbox::Options{.http2 = true});
    service->fault("/time", {.delay = 24h});
    Wire wire(*service, http2);
    std::vector<std::size_t> order;
    const auto answers = wire.send({time, clock}, [&](std::size_t answered) {
        order.push_back(answered);
        service.reset();
    });
    EXPECT_THAT(order, ElementsAre(1, 0));
    EXPECT_EQ(answers[0].status, 0);
    EXPECT_EQ(answers[1].status, 200);
    EXPECT_EQ(answers[1].version, CURL_HTTP_VERSION_2_0);
    EXPECT_EQ(answers[1].connects, 0) << "the connection of the other";
}

TEST(Http2, LosesOneReplyOfAConnection) {
    sandbox::Sandbox service({.http2 = true});
    Wire wire(service, http2);
    struct Case {
        sandbox::Fault fault;
        std::string arrived;
    };
    wire.send({clock});
    for (const auto& c : std::initializer_list<Case>{{{.drop = true}, ""}, {{.cutAfter = 5}, R"({"mes)"}}) {
        service.fault("/time", c.fault);
        const auto answers = wire.send({time, clock});
        EXPECT_EQ(answers[0].result, CURLE_HTTP2_STREAM);
        EXPECT_EQ(answers[0].body, c.arrived);
        EXPECT_EQ(std::pair(answers[1].status, answers[1].connects), std::pair(200, 0L));
    }
}

TEST(Http2, SendsLargeBodiesAndNone) {
    Client client({.http2 = true});
    client.service.fault("/time", {.padTo = 1'000'000});
    EXPECT_EQ(client.send("GET", "/v1/time?").body.size(), 1'000'000U);
    EXPECT_EQ(client.send("HEAD", "/v1/time?").status, 405);
}

TEST(Http2, StreamsEvents) {
    const sandbox::Sandbox service({.http2 = true});
    auto events = ask("GET", "/_sandbox/events");
    events.until = R"("isStopped":true)";
    const auto answers = Wire(service, http2).send({events, ask("PUT", "/_sandbox/clock", {{"isStopped", true}})});
    EXPECT_EQ(std::pair(answers[0].status, answers[1].status), std::pair(200, 200)) << answers[0].body;
}

TEST(Http2, LimitsRequests) {
    const sandbox::Sandbox service({.http2 = true});
    auto largest = ask("POST", "/v1/none"), larger = largest, longHeader = largest;
    largest.request.body.resize(1 << 20);
    larger.request.body.resize((1 << 20) + 1);
    longHeader.request.set_header("long", std::string(40'000, 'x'));
    Wire wire(service, http2);
    std::vector<int> statuses;
    for (const auto& each : {largest, larger, longHeader, clock}) statuses.push_back(wire.send({each})[0].status);
    EXPECT_THAT(statuses, ElementsAre(404, 413, 0, 200));
}

/// A TLS client that sends whatever it is told to.
class RawClient {
public:
    RawClient(const sandbox::Sandbox& service, const std::string& offer) {
        mStream.reset(BIO_new_ssl_connect(mContext.get()));
        SSL* tls = nullptr;
        BIO_get_ssl(mStream.get(), &tls);
        SSL_set_alpn_protos(tls, reinterpret_cast<const unsigned char*>(offer.data()), unsigned(offer.size()));
        BIO_set_conn_hostname(mStream.get(), service.address().c_str());
        ERR_clear_error();
        if (BIO_do_connect(mStream.get()) != 1) mAlert = ERR_GET_REASON(ERR_peek_last_error());
    }
    /// Why the server refused the handshake; 0 if it did not.
    int alert() const { return mAlert; }
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
    int mAlert = 0;
};

TEST(Http2, RefusesClientsWithoutIt) {
    const sandbox::Sandbox service({.http2 = true});
    EXPECT_EQ(Wire(service, CURL_HTTP_VERSION_1_1).send({clock})[0].result, CURLE_SSL_CONNECT_ERROR);
    for (const auto* offer : {"", "\x08http/1.1"})
        EXPECT_EQ(RawClient(service, offer).alert(), SSL_R_TLSV1_ALERT_NO_APPLICATION_PROTOCOL) << offer;
    EXPECT_EQ(RawClient(service, "\x08http/1.1\x02h2").alert(), 0);
}

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
        EXPECT_EQ(RawClient(service, "\x02h2").farewell(c.sent), c.error) << c.what;
    }
    EXPECT_EQ(Wire(service, http2).send({clock})[0].status, 200);
}

}  // namespace
}  // namespace kavio::test
