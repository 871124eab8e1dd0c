#include "client.h"
#include "sandbox/journal.h"
#include "sandbox/paths.h"
#include "sandbox/secrets.h"
#include "sandbox/world.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

const std::string base = "/_sandbox";

/// Over HTTP/1.1 and over HTTP/2.
class ControlOverHttps : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Http2, ControlOverHttps, testing::Bool());

TEST_P(ControlOverHttps, ShowsRequestsAndSteersTheSandbox) {
    Client client({.http2 = GetParam()});
    client.send("POST", "/v1/none?a=%20b", {{"x", 1}});
    const auto sent = client.service.requests().at(0);
    EXPECT_EQ(sent.method + " " + sent.host + sent.target + " " + sent.body,
              R"(POST api-qa2.kavio.example/v1/none?a=%20b {"x":1})");
    client.ok("POST", base + "/faults", {{"path", "/time"}, {"status", 500}});
    EXPECT_EQ(client.send("GET", "/v1/time?").status, 500);
    EXPECT_EQ(client.send("GET", "/v1/%FF").status, 404);
    client.ok("PUT", base + "/clock", {{"offsetSeconds", 86400}});
    EXPECT_EQ(client.ok("GET", "/v1/time?")["serverTime"], "2024-03-06T14:07:09.250+0000");
    client.ok("PUT", base + "/clock", {{"offsetSeconds", 0}});
    client.login();
    client.ok("DELETE", base + "/tokens");
    EXPECT_EQ(client.send("GET", "/v1/account?").status, 401);
    EXPECT_EQ(client.ok("GET", base + "/requests").size(), 7U);
    EXPECT_EQ(client.send("PUT", base + "/clock", {{"offsetSeconds", 1'000'000'000'000'000'000}}).status, 400);
    EXPECT_EQ(client.ok("GET", base + "/state")["accounts"][0]["balance"], 5000);
    for (const auto& [name, value] : std::map<std::string, int>{{"status", 99}, {"times", 0}, {"padTo", -1}}) {
        const auto refused = client.send("POST", base + "/faults", {{"path", "/x"}, {name, value}});
        EXPECT_EQ(refused.message().find(name + " must be "), 0U) << refused.message();
    }
    EXPECT_EQ(client.send("GET", base + "/nothing").status, 404);
}

TEST_P(ControlOverHttps, RefusesWhatThePageOfAnotherSiteMayHaveCaused) {
    Client client({.http2 = GetParam()});
    struct Case {
        const char* method;
        Headers headers;
        int status;
    };
    const auto own = "https://localhost:" + std::to_string(client.service.port());
    const auto here = "localhost:" + std::to_string(client.service.port());
    for (const auto& c : std::initializer_list<Case>{
             {"GET", {}, 200},
             {"DELETE", {}, 200},
             {"GET", {{"Sec-Fetch-Site", "none"}}, 200},
             {"GET", {{"Host", here}, {"Origin", own}, {"Sec-Fetch-Site", "same-origin"}}, 200},
             {"DELETE", {{"Host", here}, {"Origin", own}, {"X-Kavio-Sandbox", "page"}}, 200},
             {"DELETE", {{"Sec-Fetch-Site", "same-origin"}, {"X-Kavio-Sandbox", "page"}}, 200},
             {"DELETE", {{"Host", here}, {"Origin", own}}, 403},
             {"DELETE", {{"Sec-Fetch-Site", "same-origin"}}, 403},
             {"DELETE", {{"Sec-Fetch-Site", "none"}, {"X-Kavio-Sandbox", "page"}}, 403},
             {"GET", {{"Sec-Fetch-Site", "cross-site"}}, 403},
             {"GET", {{"Sec-Fetch-Site", "same-site"}}, 403},
             {"DELETE", {{"Host", here}, {"Origin", "null"}, {"X-Kavio-Sandbox", "page"}}, 403},
             {"DELETE", {{"Host", here}, {"Origin", "http://" + here}, {"X-Kavio-Sandbox", "page"}}, 403},
             {"DELETE", {{"Host", here}, {"Origin", "https://localhost:1"}, {"X-Kavio-Sandbox", "page"}}, 403},
             {"GET", {{"Host", "rebound.example"}}, 403},
             {"OPTIONS", {{"Origin", "https://evil.example"}}, 403},
         }) {
        EXPECT_EQ(client.send(c.method, base + "/state", nullptr, c.headers).status, c.status)
            << c.method << testing::PrintToString(c.headers);
    }
    // The page is for browsers on this machine; elsewhere the service has nothing there.
    EXPECT_THAT(client.send("GET", "/", nullptr, {{"Host", here}}).body, HasSubstr("<title>Kavio sandbox</title>"));
    EXPECT_EQ(client.send("GET", "/").status, 404);
}

TEST(Control, StopsAndStepsTheTimeOfOrdersAndTokens) {
    Client client;
    client.login();
    const auto buy = [&](int amount) {
        return std::string(client.ok("POST", "/v1/machines/42100107/orders",
                                     {{"amount", amount}, {"products", json::array()}})["order"]["id"]);
    };
    const auto status = [&](const std::string& order) {
        return std::string(client.ok("GET", "/v1/orders/" + order + "?statusOnly=true")["order"]["orderStatus"]);
    };
    const auto step = [&](std::int64_t by) { client.ok("POST", base + "/clock", {{"stepMs", by}}); };
    const auto order = buy(150), tooMuch = buy(4851);
    std::vector<std::string> seen;
    for (int i = 0; i < 4; ++i, step(1000)) seen.push_back(status(order) + " " + status(tooMuch));
    EXPECT_THAT(
        seen, ElementsAre("created created", "started started", "authorized limitExceeded", "completed limitExceeded"));
    EXPECT_EQ(client.ok("GET", base + "/state")["accounts"][0]["balance"], 4850);

    client.ok("PUT", base + "/clock", {{"isStopped", true}});
    EXPECT_EQ(client.ok("GET", base + "/clock"),
              (json{{"now", "2024-03-05T14:07:09.250"}, {"offsetSeconds", 0}, {"isStopped", true}, {"aheadMs", 4000}}));
    step(86'400'000);
    EXPECT_EQ(client.send("GET", "/v1/account?").message(), "the session token is invalid or has expired");
    for (const auto& [body, message] :
         std::map<json, std::string>{{json::object(), "offsetSeconds or isStopped is missing"},
                                     {{{"isStopped", 1}}, "isStopped must be true or false"},
                                     {{{"stepMs", 1}}, "stepMs is not a parameter of this request"}})
        EXPECT_EQ(client.send("PUT", base + "/clock", body).message(), message);
    EXPECT_EQ(client.send("POST", base + "/clock", {{"stepMs", 0}}).message(), "stepMs must be 1 to 31556952000");
}

TEST(Control, TimeThatWasStoppedGoesOnFromThere) {
    sandbox::Pace pace;
    const sandbox::TimePoint noon{12h};
    pace.resume(noon);
    EXPECT_EQ(pace.at(noon), noon);
    pace.stop(noon);
    pace.stop(noon + 1h);
    EXPECT_EQ(pace.at(noon + 2h), noon);
    pace.resume(noon + 3h);
    EXPECT_EQ(pace.at(noon + 4h), noon + 1h);
}

TEST(Control, ResetsEverything) {
    const auto counted = [n = 0]() mutable { return "text-" + std::to_string(++n); };
    Client client({.unguessableText = counted});
    client.login();
    const auto token = client.token;
    client.ok("POST", base + "/faults", {{"path", "/none"}, {"status", 500}});
    client.ok("PUT", base + "/clock", {{"offsetSeconds", 60}, {"isStopped", true}});
    client.ok("PUT", base + "/code", {{"number", "49151234567"}, {"code", "1"}});
    client.ok("DELETE", base + "/state");
    EXPECT_EQ(client.send("GET", "/v1/account?").status, 401);
    client.ok("DELETE", base + "/requests");
    const json everything{client.ok("GET", base + "/state"), client.ok("GET", base + "/faults"),
                          client.ok("GET", base + "/requests"), client.ok("GET", base + "/clock")};
    EXPECT_EQ(everything, json::parse(R"([
        {"now": "2024-03-05T14:07:09.250", "accounts": [], "codes": [], "sessions": 0, "purchases": []}, [], [],
        {"now": "2024-03-05T14:07:09.250", "offsetSeconds": 0, "isStopped": false, "aheadMs": 0}])"));
    client.login();
    EXPECT_EQ(client.token, token) << "the same texts come again";
}

TEST(Control, CountsTheHitsOfAFaultAndSaysWhenThereCanBeNone) {
    Client client;
    const auto add = [&](const json& fault) { return client.ok("POST", base + "/faults", fault); };
    EXPECT_EQ(add({{"path", "/time"}, {"status", 500}, {"times", 2}}), (json{{"ok", true}, {"id", 1}}));
    EXPECT_EQ(add({{"path", "/v1/time"}, {"drop", true}}),
              (json{{"ok", true}, {"id", 2}, {"warning", "no request has this path: leave out /v1"}}));
    const auto reports = [&] {
        std::vector<std::string> lines;
        for (const auto& fault : client.ok("GET", base + "/faults"))
            lines.push_back(fault["id"].dump() + " " + fault["hits"].dump() + " of " + fault["requests"].dump() +
                            (fault["isSpent"] ? " spent" : "") + (fault.contains("warning") ? " warned" : ""));
        return lines;
    };
    EXPECT_THAT(reports(), ElementsAre("1 0 of 0", "2 0 of 0 warned"));
    for (int i = 0; i < 3; ++i) client.send("GET", "/v1/time?");
    EXPECT_THAT(reports(), ElementsAre("1 2 of 2 spent", "2 0 of 3 warned"));
    EXPECT_EQ(client.ok("GET", base + "/requests")[1]["reply"]["fault"], 1);
    client.ok("DELETE", base + "/faults?id=1");
    EXPECT_EQ(client.send("DELETE", base + "/faults?id=1").message(), "there is no fault with this id");
    EXPECT_THAT(reports(), ElementsAre("2 0 of 3 warned"));
    EXPECT_EQ(client.send("POST", base + "/faults", {{"path", std::string(201, '*')}}).status, 400);
    for (int i = 1; i < 100; ++i) client.service.fault("/none", {});
    EXPECT_EQ(client.send("POST", base + "/faults", {{"path", "/"}}).message(), "there are 100 faults already");
}

TEST(Paths, AreComparedWithThoseOfFaults) {
    struct Case {
        std::string path;
        std::string method;
        std::string warning;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"*", "", ""},
             {"/orders/123", "GET", ""},
             {"/orders/*", "POST", "no request with this path is a POST"},
             {"/machines/*/orders", "POST", ""},
             {"*/orders", "POST", ""},
             {"/machines/42/order", "", "no request has this path"},
             {"/v1/*", "", "no request has this path: leave out /v1"},
             {"/acs/challenge/*", "PUT", ""},
             {"/tim[e]", "", ""},
             {"", "", "no request has this path"},
             {"/orders/1/items", "", "no request has this path"},
             {"/acs/gallery/7/page", "PUT", ""},
             {"/m" + std::string(200, '*') + "/products", "POST", "no request with this path is a POST"},
         }) {
        EXPECT_EQ(sandbox::faultWarning(c.path, c.method), c.warning) << c.method << c.path;
    }
}

TEST(Journal, KeepsTheLastRequestsAndTheirStarts) {
    sandbox::Journal journal;
    constexpr auto most = sandbox::Journal::mostExchanges;
    const std::string longText(10'000, 'x');
    const auto begin = [&] {
        return journal.begin({"POST", "host", "/", {{"a", "b"}, {"long", longText}}, longText}, {});
    };
    const auto forgotten = begin();
    for (std::size_t i = 0; i < most; ++i) begin();
    EXPECT_EQ(journal.first(), forgotten + 1);
    journal.end(forgotten, {}, {});
    journal.end(forgotten + 1, {.status = 500, .body = longText}, sandbox::Verdict::wrong);
    const auto all = journal.changedSince(0);
    EXPECT_THAT(all, SizeIs(most));
    EXPECT_THAT(journal.changedSince(most + 1), SizeIs(1)) << "the one that has ended";
    const auto& kept = all.front();
    EXPECT_THAT(kept.request.headers, ElementsAre(testing::Pair("a", "b")));
    for (const auto& [text, size] :
         {std::pair(kept.request.body, kept.bodySize), std::pair(kept.answer->body.text, kept.answer->body.size)})
        EXPECT_EQ(std::pair(text.size(), size), std::pair(sandbox::Journal::mostText, longText.size()));
    journal.clear();
    EXPECT_EQ(journal.first(), forgotten + most + 1);
}

TEST(Secrets, AreMaskedInTexts) {
    for (const auto& [text, shown] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
             {R"({"token":{"token":"abc"}})", R"({"token":{"token":"•••"}})"},
             {R"({"number" : "4000000000001018", "year": 2030})", R"({"number" : "•••1018", "year": 2030})"},
             {R"({"securityCode":123,"month":1})", R"({"securityCode":•••,"month":1})"},
             {R"({"verificationCode":"12\"34", "country":"DE"})", R"({"verificationCode":"•••", "country":"DE"})"},
             {R"({"token":"cut \)", R"({"token":"•••)"},
             {R"({"token":)", R"({"token":)"},
             {R"({"code":null,"tokens":"seen","message":"token is not the one"})",
              R"({"code":•••,"tokens":"seen","message":"token is not the one"})"},
             {"/v1/account?os=x&pushToken=abc&appVersion=1", "/v1/account?os=x&pushToken=•••&appVersion=1"},
             {"code=1234&action=accept", "code=•••&action=accept"},
             {R"(location = "http://127.0.0.1/?g1=abc&z2=0")", R"(location = "http://127.0.0.1/?g1=•••&z2=0")"},
             {"\xFF\"token\":\"\xC3", "\xFF\"token\":\"•••"},
         })
        EXPECT_EQ(sandbox::masked(text), shown);
}

TEST(Secrets, AreShownToThoseWhoAsk) {
    Client client;
    client.login();
    client.ok("GET", "/v1/account?");
    const auto told = [&](const char* query) { return client.ok("GET", base + "/requests" + query).dump(); };
    EXPECT_THAT(told(""),
                AllOf(Not(HasSubstr(client.token)), Not(HasSubstr("demo-key")), Not(HasSubstr(R"(123456\")"))));
    EXPECT_THAT(told("?secrets=true"), AllOf(HasSubstr(client.token), HasSubstr("demo-key"), HasSubstr(R"(123456\")")));
    EXPECT_EQ(client.send("GET", base + "/requests?secrets=maybe").status, 400);
}

}  // namespace
}  // namespace kavio::test
