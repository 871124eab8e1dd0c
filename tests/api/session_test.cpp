#include "network/session.h"

#include "models/json/json_value.h"
#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using EnvironmentType = Kavio::EnvironmentType;
using testing::ElementsAre;

TEST(Session, KeepsTheChallengeOfTheLastLoginThatSucceeded) {
    World world;
    world.kavio().login("49", "501");
    world.answer({200, replies::challenge});
    world.kavio().login("49", "502");
    world.answer({503, "{}"});
    world.kavio().verify("1", "DE", "49", "501");
    EXPECT_EQ(JsonValue::parse(*world.sent().back().body)["challenge"], "c1");
    world.answer({200, "null"});  // a success that carries no token
    EXPECT_EQ(world.store().string("session_token"), std::nullopt);

    const Report loginFirst{"onVerify", ResultType::FAILURE, "please call login first"};
    world.kavio().login("49", "502");
    world.answer({200, "null"});  // a success that carries no challenge
    world.kavio().verify("1", "DE", "49", "502");
    EXPECT_EQ(world.reports().back(), loginFirst);

    world.kavio().login("49", "502");
    world.answer({200, replies::challenge});
    world.kavio().verify("2", "DE", "49", "502");
    world.answer({200, replies::token});
    world.kavio().verify("2", "DE", "49", "502");
    EXPECT_EQ(world.reports().back(), loginFirst) << "a challenge opens one session";
    EXPECT_EQ(world.store().string("session_token"), "t1");
}

TEST(Session, EndsWhenTheServiceRefusesIt) {
    for (const int status : {401, 406}) {
        World world;
        world.store().set("session_token", "t1");
        world.kavio().isLoggedIn();
        world.answer({status, "{}"});
        world.kavio().isLoggedIn();
        EXPECT_EQ(world.reports().back(), (Report{"onCheckIsUserLogin", ResultType::FAILURE, "Token is empty"}));
        EXPECT_EQ(world.store().string("session_token"), "");
        EXPECT_EQ(world.sent().size(), 1U) << "nothing is sent without a token";
    }
}

TEST(Session, EndsWithTheLogout) {
    World world;
    world.device().libraryBundle().information = {{"DTPlatformName", std::string("fakeOS")},
                                                  {"DTPlatformVersion", std::string("1.0")}};
    world.store().set("session_token", "t1");
    world.kavio().isLoggedIn();
    EXPECT_EQ(header(world.sent().back(), "X-Zelto-Wallet-Session-Token"), "t1");
    world.answer({200, replies::account});
    ASSERT_TRUE(world.store().data("account"));
    const auto account = *world.store().data("account");
    EXPECT_EQ(JsonValue::parse(account.begin(), account.end())["account"]["phone"], "501");

    world.kavio().logout();
    world.answer({503, "{}"});
    EXPECT_EQ(world.store().string("session_token"), "t1") << "a failed logout leaves the session";
    world.kavio().logout();
    world.answer({200, replies::ok});
    EXPECT_EQ(world.store().string("session_token"), "");
    EXPECT_EQ(world.store().date("server_expired_time"), std::nullopt);
    EXPECT_THAT(world.paths(),
                ElementsAre("/account?appVersion=2.5&os=fakeOS&osVersion=1.0", "/account/logout?", "/account/logout?"));
    EXPECT_EQ(world.sent().back().method, "PUT");
}

// The person logs in anew, and the application goes to another service, while a request waits for the time.
TEST(Session, KeepsTheTokenOfARequestThatWaitsFromAnotherService) {
    for (const auto& [service, sent] : {std::pair{"ApiQA2", "t1"}, {"ApiQA2Stable", ""}}) {
        World world;
        openSession("t1", ApiType::ApiQA2, "501");
        world.store().remove("server_expired_time");
        world.kavio().getOrder("1");
        openSession("t2", ApiType::ApiQA2, "502");
        world.store().set("service_name", std::string(service));
        world.answer({200, replies::time("2039")});
        EXPECT_EQ(header(world.sent().back(), "X-Zelto-Wallet-Session-Token"), sent) << service;
        EXPECT_EQ(world.sent().size(), 2U);
    }
}

TEST(Facade, ChoosesTheServiceForTheWholeProcess) {
    using Text = std::optional<std::string>;
    for (const auto& [stored, environment, kept] : std::vector<std::tuple<Text, EnvironmentType, Text>>{
             {std::nullopt, EnvironmentType::PROD, std::nullopt},  // nothing stored means production anyway
             {"nonsense", EnvironmentType::PROD, "nonsense"},
             {"ApiProduction", EnvironmentType::TESTS, "ApiQA2Stable"},
             {"ApiQA2", EnvironmentType::PROD, "ApiProduction"},
         }) {
        World world;
        world.store().remove("service_name");
        if (stored) world.store().set("service_name", *stored);
        world.makeFacade(environment);
        EXPECT_EQ(world.store().string("service_name"), kept);
    }
}

TEST(Facade, SendsToTheServiceThatTheStoreNames) {
    World world;
    for (const auto& [stored, url] : std::vector<std::pair<std::string, std::string>>{
             {"ApiProduction", "https://api.kavio.example:443/v1/orders/1?statusOnly=false"},
             {"ApiKavioDE", "https://api-de.kavio.example/v1/orders/1?statusOnly=false"},
             {"apiqa3", "https://api.kavio.example:443/v1/orders/1?statusOnly=false"},
         }) {
        world.store().set("service_name", stored);
        world.kavio().getOrder("1");
        EXPECT_EQ(world.sent().back().url, url);
        world.answer({503, ""});
    }
}

}  // namespace
}  // namespace kavio::test
