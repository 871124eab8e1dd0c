#include "platform/fresh_network.h"
#include "platform/linux/url_session.h"

#include <kavio/platform/linux.h>
#include <kavio/platform/request_log.h>
#include <kavio/testing/conformance/background_url_session.h>
#include <kavio/testing/conformance/url_session.h>
#include <kavio/testing/network.h>
#include <kavio/testing/timeline.h>

#include <cstdlib>

namespace kavio::test {
namespace {

UrlSessionConfiguration configured(const Reach& reach) { return {reach.authorities, reach.address}; }

const SessionPort linuxSessions{
    .name = "Linux",
    .factory = {
        .session = [](const Reach& reach) { return makeUrlSession(configured(reach)); },
        .backgroundSession = [](const Reach& reach) { return makeBackgroundUrlSession(configured(reach)); },
        .makeRoute = [] { EXPECT_EQ(std::system("ip link set lo up"), 0); },
    },
    .withoutRoute = inFreshNetwork,
};

/// The same, and each request and reply is written to a log.
const SessionPort loggedSessions = [] {
    auto port = linuxSessions;
    port.name = "Logged";
    const auto logged = [](const Reach& reach) {
        auto platform = Platform::current();
        platform.urlSession = makeUrlSession(configured(reach));
        platform.backgroundUrlSession = makeBackgroundUrlSession(configured(reach));
        return withRequestLog(std::move(platform), [](std::string_view) {});
    };
    port.factory.session = [logged](const Reach& reach) { return logged(reach).urlSession; };
    port.factory.backgroundSession = [logged](const Reach& reach) { return logged(reach).backgroundUrlSession; };
    return port;
}();

/// The service on the network of a device in a box.
class BoxPeer final : public Peer {
public:
    BoxPeer() = default;
    ~BoxPeer() override { mTimeline->clear(); }
    BoxPeer(const BoxPeer&) = delete;
    BoxPeer& operator=(const BoxPeer&) = delete;

    std::shared_ptr<UrlSession> makeSession() override { return mNetwork.ordinarySession(); }
    std::shared_ptr<BackgroundUrlSession> makeBackgroundSession() override { return mNetwork.backgroundSession(); }
    void serve(Conduct conduct, UrlReply reply) override {
        mConduct = conduct;
        mReply = std::move(reply);
        mNetwork.usually([conduct](const UrlRequest&) {
            if (conduct == Conduct::SILENT) return Fate{.connecting = std::chrono::hours(1)};
            return conduct == Conduct::GONE ? fate::noConnection() : Fate{};
        });
    }
    std::vector<std::string> seen() const override { return mSeen; }
    bool runUntil(const std::function<bool()>& done) override { return mTimeline->runUntil(done); }
    void loseRoute() override { mNetwork.cut(); }
    void makeRoute() override { mNetwork.restore(); }

private:
    Handled handle(const UrlRequest& request) {
        auto target = request.url.substr(std::string_view(serviceUrl).size());
        if (target.empty()) target = "/";
        mSeen.push_back(request.method + " " + target + (request.body ? " " + *request.body : ""));
        return {.reply = mReply,
                .delay = mConduct == Conduct::STALLS ? std::chrono::hours(1) : std::chrono::hours(0),
                .isLost = mConduct == Conduct::DROPS,
                .isCut = mConduct == Conduct::CUTS};
    }

    const std::shared_ptr<Timeline> mTimeline = std::make_shared<Timeline>();
    Network mNetwork{mTimeline, [this](const UrlRequest& request) { return handle(request); }};
    Conduct mConduct = Conduct::ANSWERS;
    UrlReply mReply{200, "ok"};
    std::vector<std::string> mSeen;
};

const SessionPort boxSessions{
    .name = "Box",
    .withoutRoute = [](const std::function<void()>& test) { return test(), true; },
    .makePeer = [] { return std::make_unique<BoxPeer>(); },
};

INSTANTIATE_TEST_SUITE_P(Linux, SessionConformance, testing::Values(linuxSessions));
INSTANTIATE_TEST_SUITE_P(Linux, UrlSessionWireConformance, testing::Values(linuxSessions));
INSTANTIATE_TEST_SUITE_P(Linux, BackgroundSessionConformance, testing::Values(linuxSessions));
INSTANTIATE_TEST_SUITE_P(Linux, BackgroundSessionWireConformance, testing::Values(linuxSessions));

INSTANTIATE_TEST_SUITE_P(Logged, SessionConformance, testing::Values(loggedSessions));
INSTANTIATE_TEST_SUITE_P(Logged, BackgroundSessionConformance, testing::Values(loggedSessions));

INSTANTIATE_TEST_SUITE_P(Box, SessionConformance, testing::Values(boxSessions));
INSTANTIATE_TEST_SUITE_P(Box, BackgroundSessionConformance, testing::Values(boxSessions));

}  // namespace
}  // namespace kavio::test
