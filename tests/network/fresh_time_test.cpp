#include "network/request_signature.h"
#include "support/sample_replies.h"
#include "support/world.h"
#include "time/reliable_clock.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using std::chrono::seconds;
using testing::ElementsAre;

const std::string order = "/orders/1?statusOnly=false";

// A world without a time sample, as after a fresh install.
struct FreshInstall : World {
    FreshInstall() { store().remove("server_expired_time"); }
};

TEST(FreshTime, IsAskedForWhenNoMoreThan300SecondsAreLeft) {
    for (const auto& [left, asked] : std::vector<std::pair<int, bool>>{{301, false}, {300, true}, {-5, true}}) {
        World world;
        world.store().set("server_expired_time", serverNow() + seconds(left));
        world.kavio().getOrder("1");
        EXPECT_THAT(world.paths(), ElementsAre(asked ? "/time?" : order));
    }
}

TEST(FreshTime, ComesBeforeTheRequestWhateverItBrings) {
    const std::string deviceTime = "20240101000000";
    for (const auto& [answer, stamp] : std::vector<std::pair<Answer, std::string>>{
             {{200, replies::time("1999")}, "19990601000000"},
             {{200, R"({"serverTime":"soon","expireTime":null})"}, deviceTime},
             {{200, "<html>"}, deviceTime},
             {{500, "{}"}, deviceTime},
             {UrlError::notConnectedToInternet, deviceTime},
         }) {
        SCOPED_TRACE(answer.body);
        FreshInstall world;
        world.kavio().getOrder("1");
        world.answer(answer);
        ASSERT_THAT(world.paths(), ElementsAre("/time?", order));
        EXPECT_EQ(header(world.sent().front(), "X-Zelto-Wallet-Session-Token"), "");
        EXPECT_EQ(serverTimeStamp(), stamp);
        const auto request = world.sent().back();
        EXPECT_EQ(header(request, "X-Zelto-Sign"), signRequest(request.url, ""));
        world.answer({200, replies::order("completed", "1")});
        EXPECT_THAT(world.reports(),
                    ElementsAre(Report{"onGetOrder", ResultType::SUCCESS, std::nullopt, "1 COMPLETED"}))
            << "the time request has no report of its own";
        world.kavio().getOrder("1");
        EXPECT_EQ(world.paths().back(), stamp == deviceTime ? "/time?" : order);
    }
}

TEST(FreshTime, FollowsTheServersClockAndComesBeforeAnOrderToo) {
    FreshInstall world;
    world.kavio().placeOrder(1, std::make_shared<PaymentMethod>("0", "501", PaymentMethod::PaymentType::KAVIO), 1, {});
    EXPECT_TRUE(world.sentInBackground().empty());
    world.answer({200, R"({"serverTime":"2020-01-01T10:00:00.000+0000","expireTime":"2020-01-02T00:00:00.000+0100"})"});
    EXPECT_EQ(world.sentInBackground().size(), 1U);
    world.advance(seconds(90));
    EXPECT_EQ(serverTimeStamp(), "20200101100130");
    EXPECT_EQ(world.store().date("server_expired_time"),
              Date(std::chrono::sys_days(std::chrono::January / 1 / 2020) + std::chrono::hours(23)));
}

TEST(FreshTime, IsAskedForAfterARefusedSignatureAndAfterLogout) {
    World world;
    world.kavio().getOrder("1");
    world.answer({417, "{}"});
    world.kavio().getOrder("1");
    world.answer({200, replies::time("2024")});
    world.answer({503, ""});
    world.kavio().logout();
    world.answer({200, replies::ok});
    world.kavio().getOrder("1");
    EXPECT_THAT(world.paths(), ElementsAre(order, "/time?", order, "/account/logout?", "/time?"));
}

TEST(FreshTime, IsAskedForWhenSomebodyHasSetTheDevicesClockWhileTheProgramWasNotRunning) {
    for (const auto shift : {-200, 0, 200}) {
        FreshInstall world;
        world.kavio().getOrder("1");
        world.answer({200, replies::time("2024")});
        world.restart();
        world.advance(std::chrono::minutes(1));
        world.device().time().setWallClock(world.device().time().now() + seconds(shift));
        world.kavio().getOrder("1");
        EXPECT_EQ(world.paths().back(), shift == 0 ? order : "/time?") << shift;
    }
}

TEST(FreshTime, IsAskedForWhenSomebodyHasSetTheDevicesClock) {
    for (const auto& [shift, paths] : std::vector<std::pair<seconds, std::vector<std::string>>>{
             {seconds(-6), {order, "/time?"}},
             {seconds(-4), {order, order}},
             {seconds(4), {order, order}},
             {seconds(6), {order, "/time?"}},
         }) {
        World world;
        world.kavio().getOrder("1");
        world.answer({503, ""});
        world.advance(std::chrono::minutes(10));
        world.device().time().setWallClock(world.device().time().now() + shift);
        world.kavio().getOrder("1");
        EXPECT_EQ(world.paths(), paths);
    }
}

TEST(FreshTime, IsNotAskedForByLoginAndVerify) {
    FreshInstall world;
    world.kavio().login("49", "501");
    world.answer({200, replies::challenge});
    world.kavio().verify("1", "DE", "49", "501");
    EXPECT_THAT(world.paths(), ElementsAre("/account/challenge/", "/account/verify/"));
}

}  // namespace
}  // namespace kavio::test
