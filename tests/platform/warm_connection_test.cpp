#include "platform/linux/url_session.h"
#include "platform/test_host.h"

#include <atomic>

namespace kavio::test {
namespace {

class WarmConnection : public ::testing::Test {
protected:
    std::string ask(UrlSession& session) { return text(outcomeOf(begin(session, get(serviceUrl)))); }

    /// The method of each request, in order.
    std::vector<std::string> methods() const {
        std::vector<std::string> found;
        for (const auto& request : server.requests()) found.push_back(request.substr(0, request.find(' ')));
        return found;
    }

    std::shared_ptr<UrlSession> session(bool isWarm) const {
        auto configuration = configured(server.address());
        configuration.warmsConnection = isWarm;
        return makeUrlSession(configuration);
    }

    /// Closes each of its first connections once it has answered a request there.
    void serve(RawServer::Connection& connection) {
        if (!connection.handshake()) return;
        while (!connection.readRequest().empty()) {
            if (!connection.send(httpReply(200, connection.isResumed() ? "resumed" : "new"))) return;
            ++answered;
            if (connection.number() < closed) return connection.sayGoodbye(true);
        }
    }

    std::atomic<std::size_t> closed = 1;
    std::atomic<int> answered = 0;
    const ServiceServer server{[this](RawServer::Connection& connection) { serve(connection); }};
};

TEST_F(WarmConnection, IsMadeBeforeTheNextQuery) {
    const auto warm = session(true);
    EXPECT_EQ(ask(*warm), "200 new");
    EXPECT_TRUE(eventually([&] { return answered == 2; }));
    EXPECT_EQ(ask(*warm), "200 resumed");
    EXPECT_EQ(methods(), (std::vector<std::string>{"GET", "OPTIONS", "GET"}));
    EXPECT_EQ(server.received().size(), 2U) << "the query took the connection that was there";
}

TEST_F(WarmConnection, IsNotMadeForAServiceThatKeepsNone) {
    closed = 4;
    const auto warm = session(true);
    EXPECT_EQ(ask(*warm), "200 new");
    EXPECT_TRUE(eventually([&] { return answered == 2; }));
    EXPECT_EQ(ask(*warm), "200 resumed");
    EXPECT_TRUE(eventually([&] { return answered == 4; }));
    EXPECT_EQ(ask(*warm), "200 resumed");
    EXPECT_EQ(methods(), (std::vector<std::string>{"GET", "OPTIONS", "GET", "OPTIONS", "GET"})) << "one for each query";
}

TEST_F(WarmConnection, IsNotMadeUnlessTheHostWantsIt) {
    const auto ordinary = session(false);
    EXPECT_EQ(ask(*ordinary), "200 new");
    EXPECT_EQ(ask(*ordinary), "200 resumed");
    EXPECT_EQ(methods(), (std::vector<std::string>{"GET", "GET"}));
}

}  // namespace
}  // namespace kavio::test
