#include "platform/linux/url_session.h"

#include "platform/url_session_conformance.h"
#include "support/eventually.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <tuple>

namespace kavio::test {

INSTANTIATE_TEST_SUITE_P(Linux, UrlSessionConformance, testing::Values(&makeUrlSession));

namespace {

std::string freeAddress() {
    return RawServer(service().identity, [](RawServer::Connection&) {}).address();
}

/// A server that knows HTTP/2 only, and sends back what is posted to it.
class Http2Server {
public:
    explicit Http2Server(std::string address) {
        std::ofstream(mFolder.path() / "key.pem") << service().identity.key;
        std::ofstream(mFolder.path() / "certificate.pem") << service().identity.certificate;
        std::ofstream(mFolder.path() / "file") << "from a file";
        std::vector<std::string> arguments{"nghttpd",
                                           "--echo-upload",
                                           "-a127.0.0.1",
                                           "-d" + mFolder.path().string(),
                                           address.substr(address.find(':') + 1),
                                           mFolder.path() / "key.pem",
                                           mFolder.path() / "certificate.pem"};
        std::vector<char*> pointers;
        for (auto& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        if (::posix_spawnp(&mProcess, "nghttpd", nullptr, nullptr, pointers.data(), environ) != 0) mProcess = 0;
    }
    ~Http2Server() {
        if (mProcess == 0) return;
        ::kill(mProcess, SIGTERM);
        ::waitpid(mProcess, nullptr, 0);
    }
    Http2Server(const Http2Server&) = delete;
    Http2Server& operator=(const Http2Server&) = delete;
    bool isRunning() const { return mProcess != 0; }

private:
    TemporaryFolder mFolder;
    pid_t mProcess = 0;
};

TEST(UrlSessionHttp2, CarriesRequestsSideBySide) {
    const std::string address = freeAddress();
    const Http2Server server(address);
    if (!server.isRunning()) GTEST_SKIP() << "nghttpd of the package nghttp2-server is missing";
    const auto session = makeUrlSession(service().reaching(address));
    ASSERT_TRUE(
        eventually([&] { return errorCode(fetch(*session, get(host + "/file"))) != UrlError::cannotConnectToHost; }));
    // More would not fit the window that HTTP/2 opens for a stream, and libcurl 7.88 may stall on several such at once.
    const std::string body(30'000, 'x');
    std::vector<std::future<Outcome>> outcomes;
    for (int i = 0; i < 20; ++i) {
        outcomes.push_back(begin(*session, get(host + "/file")));
        outcomes.push_back(begin(*session, post(host + "/echo", body)));
    }
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        EXPECT_EQ(text(outcomes[i].get()), i % 2 == 0 ? "200 from a file" : "200 " + body);
    }
    EXPECT_EQ(text(fetch(*session, get(host + "/none"))).substr(0, 4), "404 ");
}

/// HTTP/2 lets a server say that it has not looked at a request, and libcurl would then send that again on its own.
TEST(UrlSessionHttp2, SendsARefusedRequestAgainOnlyIfThatIsRepeatable) {
    using namespace std::string_literals;
    const auto settings = "\0\0\0\4\0\0\0\0\0"s;
    const auto refusal = "\0\0\4\3\0\0\0\0\1\0\0\0\7"s;
    const auto goAway = "\0\0\x08\7\0\0\0\0\0\0\0\0\0\0\0\0\0"s;  // no stream was looked at
    for (const auto& [answer, idempotency, again] :
         std::initializer_list<std::tuple<std::string, Idempotency, bool>>{{refusal, Idempotency::REPEATABLE, true},
                                                                           {refusal, Idempotency::ONCE, false},
                                                                           {goAway, Idempotency::ONCE, false}}) {
        const RawServer server(
            service().identity,
            [&, reply = answer](RawServer::Connection& connection) {
                if (!connection.handshake()) return;
                connection.send(settings);
                // Preface, settings and window of the client, then the head of the request's frame.
                if (connection.read(24 + 27 + 13 + 9).size() == 73) connection.send(reply);
                connection.stall();
            },
            "h2");
        auto request = post(host, "body");
        request.idempotency = idempotency;
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(service().reaching(server.address())), request)), -1005);
        const auto received = server.received();
        EXPECT_EQ(received.size() > 1 && received[1].size() >= 73, again);
    }
}

}  // namespace
}  // namespace kavio::test
