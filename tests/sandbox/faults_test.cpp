#include "client.h"
#include "support/eventually.h"

#include <gmock/gmock.h>

#include <future>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;

TEST(Faults, SpoilTheRepliesTheyAreMeantFor) {
    const std::string whole = R"({"ok":true,"result":"signed out"})";
    using Answer = std::pair<int, std::string>;
    for (const auto& [fault, expected] : std::vector<std::pair<sandbox::Fault, Answer>>{
             {{.status = 503, .body = "<html>"}, {503, "<html>"}},
             {{.body = "null"}, {200, "null"}},
             {{.body = ""}, {200, ""}},
             {{.padTo = 200'000}, {200, whole + std::string(200'000 - whole.size(), ' ')}},
             {{.delay = 1ms}, {200, whole}},
             {{.cutAfter = 10}, {0, ""}},
             {{.cutAfter = 0}, {0, ""}},
             {{.drop = true}, {0, ""}},
             {{.status = 503, .method = "GET"}, {200, whole}},
         }) {
        Client client;
        client.login();
        client.service.fault("/account/log*", fault);
        const auto spoilt = client.send("PUT", "/v1/account/logout?");
        EXPECT_EQ(Answer(spoilt.status, spoilt.body), expected);
    }
}

TEST(Faults, MeetAsManyRequestsAsTheySay) {
    Client client;
    client.service.fault("/time", {.status = 500, .times = 2});
    client.service.fault("/time", {.status = 502});
    const auto status = [&] { return client.send("GET", "/v1/time?").status; };
    EXPECT_THAT((std::vector{status(), status(), status(), status()}), testing::ElementsAre(500, 500, 502, 200));
    client.service.fault("/*", {.status = 504, .times = -1});
    EXPECT_THAT((std::vector{status(), status()}), testing::ElementsAre(504, 504));
    client.service.clearFaults();
    EXPECT_EQ(status(), 200);
}

TEST(Faults, LeaveAPurchaseUndoneUnlessHandled) {
    Client client;
    client.login();
    const json wallet{{"amount", 150}, {"products", json::array()}};
    for (const bool handled : {false, true}) {
        client.service.fault("/machines/*/orders", {.drop = true, .handled = handled});
        EXPECT_EQ(client.send("POST", "/v1/machines/42100107/orders", wallet).status, 0);
        EXPECT_EQ(client.service.state()["purchases"].size(), handled ? 1U : 0U);
    }
}

TEST(Faults, DoNotHoldUpTheEnd) {
    auto client = std::make_unique<Client>();
    client->service.fault("/time", {.delay = 24h});
    auto held = std::async(std::launch::async, [&held = *client] { return held.send("GET", "/v1/time?").status; });
    ASSERT_TRUE(eventually([&] { return !client->service.requests().empty(); }));
    client.reset();
    EXPECT_EQ(held.get(), 0);
}

TEST(Control, ShowsRequestsAndSteersTheSandboxOverHttps) {
    Client client;
    client.send("POST", "/v1/none?a=%20b", {{"x", 1}});
    const auto sent = client.service.requests().at(0);
    EXPECT_EQ(sent.method + " " + sent.host + sent.target + " " + sent.body,
              R"(POST api-qa2.kavio.example/v1/none?a=%20b {"x":1})");
    const std::string base = "/_sandbox";
    client.ok("POST", base + "/faults", {{"path", "/time"}, {"status", 500}});
    EXPECT_EQ(client.send("GET", "/v1/time?").status, 500);
    client.ok("PUT", base + "/clock", {{"offsetSeconds", 86400}});
    EXPECT_EQ(client.get("/v1/time?")["serverTime"], "2024-03-06T14:07:09.250+0000");
    client.ok("PUT", base + "/clock", {{"offsetSeconds", 0}});
    client.login();
    client.ok("DELETE", base + "/tokens");
    EXPECT_EQ(client.send("GET", "/v1/account?").status, 401);
    EXPECT_EQ(client.get(base + "/requests").size(), 6U);
    EXPECT_EQ(client.get(base + "/state")["accounts"][0]["balance"], 5000);
    EXPECT_EQ(client.send("POST", base + "/faults", {{"path", "/x"}, {"status", 99}}).message(),
              "status must be 200 to 599");
    EXPECT_EQ(client.send("GET", base + "/nothing").status, 404);
}

}  // namespace
}  // namespace kavio::test
