#include "client.h"

#include <gmock/gmock.h>
#include <openssl/evp.h>

namespace kavio::test {
namespace {

json cardOf(const std::string& number) {
    return {{"number", number}, {"month", 1}, {"year", 2031}, {"securityCode", 7}};
}

json addCard(Client& client, const std::string& number) {
    static int key = 1000;
    const json browser{{"lang", "en"}, {"challengeWindow", 4}, {"agent", "agent"}, {"accept", "accept"},
                       {"color", 1},   {"width", 300},         {"height", 300}};
    const json holder{{"name", "Robin Sample"}, {"email", "robin@kavio.example"}};
    return client.ok("POST", "/v1/account/locators/credorax/addCard",
                     {{"card", cardOf(number)},
                      {"key", "0B0A0A0A-0000-0000-0000-00000000" + std::to_string(++key)},
                      {"tdSecure", {{"holder", holder}, {"browser", browser}, {"redirect", "http://127.0.0.1"}}}});
}

/// The items of the address that a page ends with.
json itemsOf(const std::string& text) {
    const std::string start = "http://127.0.0.1/?";
    const auto at = text.find(start) + start.size();
    httplib::Params items;
    httplib::detail::parse_query_text(text.substr(at, text.find_first_of("\"\r\n", at) - at), items);
    json object;
    for (const auto& [name, value] : items) object[name] = value;
    return object;
}

json locatorBody(int flow, const std::string& number, json items) {
    return {{"flow", flow},          {"card", cardOf(number)},     {"token", items["g1"]},
            {"result", items["z2"]}, {"description", items["z3"]}, {"transaction", items["z50"]}};
}

Client::Answer getLocator(Client& client, const json& body) {
    return client.send("POST", "/v1/account/locators/credorax/getLocator", body);
}

std::string base64(const std::string& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const auto* from = reinterpret_cast<const unsigned char*>(bytes.data());
    text.resize(std::size_t(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), from, int(bytes.size()))));
    return text;
}

/// Asks for a fingerprint page as the library does.
Client::Answer fingerprintPage(Client& client, const std::string& page, const std::string& id) {
    const auto data = json{{"threeDSMethodNotificationURL", "http://127.0.0.1"}, {"threeDSServerTransID", id}}.dump(2);
    const auto url = page + "?threeDSMethodData=" + base64(data);
    return client.send("POST", url.substr(std::string("https://acs.kavio.example").size()), nullptr,
                       {{"Host", "acs.kavio.example"},
                        {"Content-Type", "application/x-www-form-urlencoded"},
                        {"Cache-Control", "no-cache"},
                        {"X-Zelto-Wallet-Api-Key", ""},
                        {"X-Zelto-Wallet-Session-Token", ""},
                        {"X-Zelto-Sign", sandbox::sign(url, "", sandbox::timeStamp(client.time()))}});
}

/// What a person enters on a challenge page, over plain HTTP as a web view does.
std::string answerChallenge(const std::string& url, const std::string& form) {
    const auto path = url.find("/acs/");
    httplib::Client browser(url.substr(0, path));
    const auto reply = browser.Post(url.substr(path), form, "application/x-www-form-urlencoded");
    return reply ? reply->get_header_value("Location") + reply->body : "no reply";
}

TEST(Issuer, AnswersEachTestCardInItsWay) {
    Client client;
    client.login();
    for (const auto& [number, expected] : std::vector<std::pair<const char*, std::string>>{
             {"4111111111111111", "locator type 1"},
             {"4000000000001018", "locator type 1"},
             {"4000000000001026", "id page type 2"},
             {"4000000000001042", "id type url 3"},
             {"4000000000001117", "message type 4"},
             {"4000000000001125", "type 9"},
         }) {
        const auto reply = addCard(client, number);
        std::string members;
        for (const auto& [name, value] : reply.items()) members += name + " ";
        EXPECT_EQ(members + reply["type"].dump(), expected) << number;
    }
}

TEST(Issuer, StoresACardAfterItsFingerprintAndItsChallenge) {
    const std::string number = "4000000000001034";
    Client client({.issuerPort = 0});
    client.login("49", "15000");
    const auto added = addCard(client, number);
    const auto page = fingerprintPage(client, added["page"], added["id"]);
    const auto challenge = getLocator(client, locatorBody(2, number, itemsOf(page.body))).parsed();
    ASSERT_EQ(challenge.value("result", 0), 2) << page.body;

    const std::string url = challenge["url"];
    EXPECT_THAT(answerChallenge(url, "code=4711&action=accept"), testing::HasSubstr("This code is wrong"));
    const auto body = locatorBody(3, number, itemsOf(answerChallenge(url, "code=1234&action=accept")));
    const json spoilt{{"flow", 2},          {"token", "x"},       {"result", "1"},
                      {"description", "x"}, {"transaction", "x"}, {"card", cardOf("4111111111111111")}};
    for (const auto& [member, value] : spoilt.items()) {
        auto wrong = body;
        wrong[member] = value;
        EXPECT_THAT(getLocator(client, wrong).message(), testing::StartsWith(member));
    }
    const auto stored = getLocator(client, body).parsed();
    EXPECT_EQ(stored["result"], 1);
    EXPECT_EQ(client.get("/v1/account?")["account"]["tokenLocators"][0]["locator"], stored["locator"]);
    EXPECT_EQ(getLocator(client, body).status, 400);
}

TEST(Issuer, RefusesACardWhoseChallengeEndsBadly) {
    Client client({.issuerPort = 0});
    client.login();
    const auto ending = [&](const std::string& number, const std::string& form) {
        const auto items = itemsOf(answerChallenge(addCard(client, number)["url"], form));
        return getLocator(client, locatorBody(3, number, items)).parsed();
    };
    EXPECT_EQ(ending("4000000000001042", "code=&action=cancel"),
              json({{"result", 3}, {"message", "Cancelled by the card holder"}}));
    EXPECT_EQ(ending("4000000000001067", "code=1234&action=accept"),
              json({{"result", 3}, {"message", "Declined by the bank"}}));
}

TEST(Issuer, ServesNothingButPagesOverPlainHttp) {
    Client client({.issuerPort = 0});
    httplib::Client plain("localhost", client.service.issuerPort());
    for (const char* path : {"/v1/time?", "/_sandbox/state", "/acs/challenge/none"}) {
        const auto reply = plain.Get(path);
        EXPECT_EQ(reply ? reply->status : 0, 404) << path;
    }
}

}  // namespace
}  // namespace kavio::test
