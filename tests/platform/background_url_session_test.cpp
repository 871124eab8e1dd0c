#include "platform/fresh_network.h"
#include "platform/linux/url_session.h"
#include "platform/test_host.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>

namespace kavio::test {
namespace {

TEST(BackgroundUrlSession, NeedsNoDiskForAReply) {
    const ServiceServer server(answering(httpReply(200, "placed")));
    const auto session = makeBackgroundUrlSession(configured(server.address()));
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit none{0, before.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_EQ(ending(fetch(*session, post(serviceUrl, "order"))), "200 placed");
    ::setrlimit(RLIMIT_FSIZE, &before);
}

TEST(BackgroundUrlSession, WaitsForARouteAndForNothingElse) {
    const bool permitted = inFreshNetwork([] {
        ASSERT_EQ(std::system("ip link set lo up && ip route add unreachable 192.0.2.1"), 0);
        const auto toNoHost = configured("192.0.2.1:443");
        EXPECT_EQ(ending(fetch(*makeUrlSession(toNoHost), get(serviceUrl))), "-1009 unsent") << "no route at all";
        EXPECT_EQ(ending(fetch(*makeUrlSession(configured("")), get(serviceUrl))), "-1009 unsent") << "name look-up";
        ASSERT_EQ(std::system("ip route add default dev lo"), 0);
        EXPECT_EQ(ending(fetch(*makeUrlSession(toNoHost), get(serviceUrl))), "-1004 unsent");
        EXPECT_EQ(ending(fetch(*makeBackgroundUrlSession(toNoHost), post(serviceUrl, "order"))), "-1004 unsent");
    });
    if (!permitted) GTEST_SKIP() << "a fresh network needs privileges";
}

}  // namespace
}  // namespace kavio::test
