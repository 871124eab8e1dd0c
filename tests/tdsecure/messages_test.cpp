#include "models/json/document.h"
#include "models/json/json_value.h"
#include "network/send_with_fresh_time.h"
#include "support/world.h"
#include "tdsecure/replies.h"
#include "tdsecure/requests.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace kavio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

const TDSPaymentCard card{.number = "4111", .month = 7, .year = 2039, .securityCode = 12};

TEST(Messages, EncodeBodiesWithoutWhatIsAbsent) {
    for (const auto& [holder, encoded] : std::vector<std::pair<TDSCardHolder, std::string>>{
             {{"Jo", "jo@a.example", {}, {}, {}, {}, {}, {}}, R"({"name":"Jo","email":"jo@a.example"})"},
             {{"Jo", "jo@a.example", 12, "High Street", "Bath", "Somerset", "GB", "BA1"},
              R"({"name":"Jo","email":"jo@a.example","streetNumber":12,"streetName":"High Street","city":"Bath",)"
              R"("territory":"Somerset","country":"GB","postal":"BA1"})"},
         }) {
        EXPECT_EQ(JsonValue(encode(TDSAddCard{card, "KEY", {.holder = holder}})),
                  JsonValue::parse(R"({"card":{"month":7,"number":"4111","securityCode":12,"year":2039},"key":"KEY",
            "tdSecure":{"browser":{"lang":"en","challengeWindow":4,"agent":"agent","accept":"accept","color":1,
            "width":300,"height":300},"redirect":"http://127.0.0.1","holder":)" +
                                   encoded + "}}"));
    }
}

std::string text(const TDSAddCardFrictionlessResponse& r) { return "frictionless " + r.locator; }
std::string text(const TDSAddCardFingerprintResponse& r) { return "fingerprint " + r.page + " " + r.id; }
std::string text(const TDSAddCardChallengeResponse& r) { return "challenge " + r.url + " " + r.id; }
std::string text(const TDSAddCardErrorResponse& r) { return "error " + r.message; }
std::string text(const TDSGetCardLocatorResponse& r) { return "locator " + r.locator; }
std::string text(const TDSGetCardChallengeResponse& r) { return "challenge " + r.url; }
std::string text(const TDSGetCardErrorResponse& r) { return "error " + r.message; }
std::string text(std::monostate) { return "unknown"; }

template <class Factory>
std::string decoded(const std::string& json) {
    const auto factory = decodeDocument<Factory>(json);
    return factory ? std::visit([](const auto& reply) { return text(reply); }, factory->reply) : "nothing";
}

TEST(Messages, TellRepliesApartByTheirMembers) {
    for (const auto& [reply, kind] : std::vector<std::pair<std::string, std::string>>{
             {R"({"type":1,"locator":"L"})", "frictionless L"},
             {R"({"type":2,"page":"P","id":"I"})", "fingerprint P I"},
             {R"({"type":4,"message":"M"})", "error M"},
             {R"({"type":4,"message":"M","url":"U","page":"P","id":"I"})", "fingerprint P I"},
             {R"({"type":0.0,"message":"M","url":"U","id":"I"})", "challenge U I"},
             {R"({"type":1,"locator":7,"message":"M"})", "error M"},
             {"null", "nothing"},
         })
        EXPECT_EQ(decoded<TDSAddCardResponseFactory>(reply), kind) << reply;
    for (const auto* reply : {R"({"type":1,"locator":null})", R"({"type":5,"locator":"L"})", R"({"locator":"L"})",
                              R"({"type":"1","locator":"L"})", R"({"type":2,"page":"P"})", "[]"})
        EXPECT_EQ(decoded<TDSAddCardResponseFactory>(reply), "unknown") << reply;
    for (const auto& [reply, kind] : std::vector<std::pair<std::string, std::string>>{
             {R"({"result":1,"locator":"L"})", "locator L"},
             {R"({"result":2,"url":"U"})", "challenge U"},
             {R"({"result":3,"message":"M"})", "error M"},
             {R"({"result":4,"message":"M","url":"U","locator":"L"})", "locator L"},
             {R"({"result":5,"locator":"L"})", "unknown"},
         })
        EXPECT_EQ(decoded<TDSGetCardResponseFactory>(reply), kind) << reply;
}

TEST(Requests, GoToTheServiceWithTheSessionAndToTheIssuerWithout) {
    World world;
    std::optional<std::string> page;
    sendWithFreshTime<TDSAddCardResponseFactory>(
        makeRequest<TDSAddCardRequestProto>({"add", "session"}, TDSAddCard{card, "KEY", {}}), [](auto) {});
    sendWithFreshTime<TDSGetCardResponseFactory>(
        makeRequest<TDSGetCardRequestProto>({"get", "session"}, TDSGetCard{.card = card}), [](auto) {});
    sendWithFreshTime<std::string>(makeRequest<TDSGetPageRequestProto>({"page"}, TDSGetPage{"e30+/w=="},
                                                                       std::string("https://acs.example/f/1?a=b")),
                                   [&](auto reply) { page = reply.payload(); });

    const auto sent = world.sent();
    ASSERT_EQ(sent.size(), 3U);
    EXPECT_THAT(world.paths(),
                ElementsAre("/account/locators/credorax/addCard", "/account/locators/credorax/getLocator", testing::_));
    for (const auto& request : {sent[0], sent[1]}) {
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(header(request, "X-Zelto-Wallet-Session-Token"), "session");
        EXPECT_EQ(request.idempotency, Idempotency::ONCE);
    }
    EXPECT_EQ(sent[2].method, "POST");
    EXPECT_EQ(sent[2].url, "https://acs.example/f/1?threeDSMethodData=e30+/w==");
    EXPECT_EQ(sent[2].body, std::nullopt);
    EXPECT_THAT(sent[2].headers, ElementsAre(Pair("Content-Type", "application/x-www-form-urlencoded"),
                                             Pair("Cache-Control", "no-cache"), Pair("Host", "acs.kavio.example"),
                                             Pair("X-Zelto-Sign", testing::SizeIs(33))));
    for (int i = 0; i < 2; ++i) world.answer({503, ""});
    world.answer({200, "<html>"});
    EXPECT_EQ(page, "<html>");
}

}  // namespace
}  // namespace kavio::test
