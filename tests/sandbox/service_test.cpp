#include "client.h"
#include "support/signature_samples.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr const char* berlinCoffee = "/v1/machines/42100107/orders";
constexpr const char* tokenHeader = "X-Zelto-Wallet-Session-Token";

TEST(Signature, FitsValuesComputedElsewhere) {
    for (const auto& [url, body, signature] : signatureSamples()) {
        EXPECT_EQ(sandbox::sign(url, body, signatureSampleTime), signature) << url << " " << body;
    }
    EXPECT_EQ(sandbox::sign("u", "not UTF-8 \xff", signatureSampleTime), sandbox::sign("u", "", signatureSampleTime));
}

TEST(Service, RefusesWhatIsNotInOrder) {
    Client client({.apiKey = "demo-key"});
    client.login();
    struct Case {
        std::string request;
        httplib::Headers headers;
        json body;
        int status;
        std::string message;
    };
    const auto signedAt = [&](std::chrono::seconds off) {
        return httplib::Headers{{"X-Zelto-Sign", sandbox::sign("https://api-qa2.kavio.example/v1/account?", "",
                                                               sandbox::timeStamp(client.time() + off))}};
    };
    const std::string get = "GET account?";
    const std::string challenge = "POST account/challenge/";
    const std::string search = "POST machines/byValue";
    const std::string coffee = "POST machines/42100107/orders";
    const std::string notOfThis = "the signature does not belong to this body at https://";
    const json order{{"amount", 1}, {"products", json::array()}};
    const std::string locators = "POST account/locators";
    const auto card = [](const char* member, const char* value) {
        json object{
            {"number", "4111111111111111"}, {"year", "30"}, {"month", "1"}, {"securityCode", "123"}, {"email", "a@b"}};
        object[member] = value;
        return json{{"paymentCard", object}, {"key", "0A0A0A0A-0000-0000-0000-000000001000"}};
    };
    auto unknownProduct = order;
    unknownProduct["products"].push_back({{"productCode", 99}, {"quantityValue", 1}, {"pulseLineNumber", 0}});
    for (const auto& c : std::vector<Case>{
             {get, {}, nullptr, 200, ""},
             {get, signedAt(-300s), nullptr, 200, ""},
             {get, signedAt(301s), nullptr, 417, "the signature's time is too far from the service's"},
             {get, {{"X-Zelto-Sign", ""}}, nullptr, 417, "X-Zelto-Sign is missing"},
             {get + "os=x", signedAt(0s), nullptr, 417, notOfThis + "api-qa2.kavio.example/v1/account?os=x"},
             {get, {{"Host", "api.kavio.example"}}, nullptr, 417, notOfThis + "api.kavio.example:443/v1/account?"},
             {get, {{"X-Zelto-Wallet-Api-Key", ""}}, nullptr, 403, "X-Zelto-Wallet-Api-Key is missing"},
             {get, {{"X-Zelto-Wallet-Api-Key", "other"}}, nullptr, 403, "unknown API key"},
             {get, {{"Content-Type", "a/b"}}, nullptr, 415, "Content-Type must be application/json; charset=utf-8"},
             {get, {{"lang", ""}}, nullptr, 400, "lang is missing"},
             {get, {{tokenHeader, "old"}}, nullptr, 401, "the session token is not valid, or not valid any more"},
             {get + "colour=red", {}, nullptr, 400, "colour is no parameter of this request"},
             {"GET nowhere", {}, nullptr, 404, "nothing here: /v1/nowhere"},
             {"GET account/challenge/", {}, nullptr, 405, "GET is not allowed here"},
             {"POST account/challenge", {}, json::object(), 404, "nothing here: /v1/account/challenge"},
             {challenge, {}, json::object(), 400, "countryCode is missing"},
             {challenge, {}, json::array(), 400, "the body is no JSON object"},
             {search, {}, {{"latitude", 1}}, 400, "latitude and longitude go together"},
             {search, {}, {{"limit", 501}}, 400, "limit must be 1 to 500"},
             {search, {}, {{"limit", true}}, 400, "limit must be an integer"},
             {coffee, {}, {{"amount", 1}}, 400, "products is missing"},
             {coffee, {}, {{"products", json::array()}}, 400, "amount is missing"},
             {coffee, {}, unknownProduct, 400, "products.productCode names no product of this machine"},
             {"POST machines/1/orders", {}, order, 404, "no machine has this number"},
             {"GET orders/-5?statusOnly=false", {}, nullptr, 404, "no order has this number"},
             {"GET orders/5?statusOnly=maybe", {}, nullptr, 400, "statusOnly must be true or false"},
             {locators, {}, card("number", "4111111111111112"), 400, "paymentCard.number is wrong"},
             {locators, {}, card("month", "13"), 400, "paymentCard.month is wrong"},
             {locators, {}, card("year", "2023"), 400, "paymentCard.year is wrong"},
             {locators, {}, card("securityCode", "12345"), 400, "paymentCard.securityCode is wrong"},
             {locators, {}, card("number", "4000000000000002"), 402, "the card was declined"},
             {locators, {}, card("number", "4000000000000002"), 400, "key was used before"},
             {"DELETE account/locators/none", {}, nullptr, 404, "no card has this locator"},
         }) {
        const auto space = c.request.find(' ');
        const auto path = "/v1/" + c.request.substr(space + 1);
        const auto answer = client.send(c.request.substr(0, space), path, c.body, c.headers);
        EXPECT_EQ(std::pair(answer.status, answer.status == 200 ? "" : answer.message()),
                  std::pair(c.status, c.message))
            << c.request;
    }
}

TEST(Service, TellsItsTimeToAClientWhoseClockIsYearsOff) {
    Client client({.sampleLifetime = 600s});
    client.service.setClockOffset(24h * 365);
    EXPECT_EQ(client.get("/v1/time?"),
              json({{"serverTime", "2025-03-05T14:07:09.250+0000"}, {"expireTime", "2025-03-05T14:17:09.250+0000"}}));
    EXPECT_EQ(client.send("GET", "/v1/prepaidCards?").status, 417);
    client.skew = 24h * 365;
    EXPECT_EQ(client.send("GET", "/v1/prepaidCards?").status, 401);
}

TEST(Service, TakesTheCodeOfTheMessageAndNoOther) {
    Client client;
    client.service.setCode("4915199", "4711");
    json body{{"countryCode", "49"}, {"phoneNumber", "15199"}, {"challenge", ""}, {"retry", "0"}};
    body.update(client.ok("POST", "/v1/account/challenge/", body)["challenge"]);
    EXPECT_THAT(client.messages(), ElementsAre("code for +49 15199 is 4711"));
    const auto verify = [&](const char* code) {
        json sent{{"country", "DE"}, {"verificationCode", code}, {"retryTimeoutSeconds", "0"}};
        for (const auto* member : {"countryCode", "phoneNumber", "challenge"}) sent[member] = body[member];
        return client.send("POST", "/v1/account/verify/", sent);
    };
    EXPECT_EQ(verify("123456").message(), "verificationCode is wrong");
    client.token = verify("4711").parsed()["token"]["token"];
    EXPECT_EQ(client.get("/v1/account?")["token"]["token"], client.token);
    EXPECT_EQ(verify("4711").message(), "challenge is not valid, or not valid any more");
}

TEST(Service, EndsASessionAtLogoutAndWithTime) {
    Client client({.tokenLifetime = 100s});
    client.login();
    EXPECT_EQ(client.ok("PUT", "/v1/account/logout?")["ok"], true);
    EXPECT_EQ(client.send("GET", "/v1/account?").status, 401);
    client.login();
    client.pass(100s);
    EXPECT_EQ(client.send("GET", "/v1/account?").status, 401);
}

TEST(Machines, AreFoundByWhatAsksForThem) {
    Client client;
    client.login();
    const std::vector<std::string> japaneseCoffee{"Hot drinks, Yaesu"};
    for (const auto& [query, expected] : std::vector<std::pair<json, std::vector<std::string>>>{
             {{{"isByAccount", true}}, {"Espresso corner, Alexanderplatz", "Cooler, platform 2", "Snack wall"}},
             {{{"latitude", 52.5219}, {"longitude", 13.4132}, {"distance", 405}},
              {"Cooler, platform 2", "Espresso corner, Alexanderplatz", "Snack wall"}},
             {{{"latitude", 0}, {"longitude", 0}, {"country", "JP"}, {"operatorId", 9002}}, japaneseCoffee},
             {{{"uni_qr_scan", "https://qr.kavio.example/m/42101570"}}, japaneseCoffee},
             {{{"uni_qr_scan", "kavio://m/42101570?from=nfc"}}, japaneseCoffee},
             {{{"kavioMachineId", 42101570}, {"hwSerial", ""}, {"limit", 50}}, japaneseCoffee},
             {{{"kavioMachineId", 42101570}, {"hwSerial", "1"}}, {}},
             {{{"uni_qr_number", "73100251"}}, japaneseCoffee},
             {{{"machineId", 2211}, {"operatorId", 9001}}, {}},
         }) {
        std::vector<std::string> names;
        for (const auto& machine : client.ok("POST", "/v1/machines/byValue", query))
            names.push_back(machine["machineName"]);
        EXPECT_EQ(names, expected) << query;
    }
}

TEST(Orders, GoThroughTheirStatusesAndMoveTheBalanceAtTheEnd) {
    Client client({.orderStep = 1000ms});
    client.login();
    const auto balance = [&] { return client.get("/v1/account?")["account"]["balance"].get<int>(); };
    const auto order = client.ok("POST", berlinCoffee, {{"amount", 150}, {"products", json::array()}})["order"];
    const auto path = "/v1/orders/" + order["id"].get<std::string>() + "?statusOnly=true";
    std::vector<std::string> seen;
    for (int step = 0; step < 5; ++step, client.pass(1000ms))
        seen.push_back(client.get(path)["order"]["orderStatus"].get<std::string>() + " " + std::to_string(balance()));
    EXPECT_THAT(seen,
                ElementsAre("created 5000", "started 5000", "authorized 5000", "completed 4850", "completed 4850"));
    EXPECT_EQ(client.get(path)["order"]["endingBalance"], 4850);
    EXPECT_EQ(client.service.state()["purchases"].size(), 1U);
}

json payment(Client& client, const std::string& with, int amount) {
    json body{{"amount", amount}, {"products", json::array()}};
    if (with == "card") body["tokenLocator"] = client.get("/v1/account?")["account"]["tokenLocators"][0]["locator"];
    if (with == "prepaid" || with == "blocked prepaid")
        body["prepaidCardId"] =
            client.get("/v1/prepaidCards?")["prepaidCards"][with == "prepaid" ? 0 : 1]["cardId"].dump();
    return body;
}

TEST(Orders, EndAsTheirMachineAndTheirMoneySay) {
    Client client;
    client.login();
    std::vector<std::tuple<std::string, const char*, int, std::string>> cases{
        {"42100107", "wallet", 5000, "completed"},
        {"42100107", "wallet", 5001, "limitExceeded"},
        {"42100107", "prepaid", 1500, "completed"},
        {"42100107", "prepaid", 1501, "limitExceeded"},
        {"42100107", "blocked prepaid", 1, "cardNotAllowed"},
        {"42101570", "wallet", 100, "currencyMismatch"},
        {"42101570", "card", 100, "completed"},
    };
    for (const auto& machine : client.ok("POST", "/v1/machines/byValue", {{"operatorId", 9099}})) {
        const std::string ending = machine["machineName"].get<std::string>().substr(8);
        cases.emplace_back(machine["kavioID"].dump(), "wallet", 1, ending);
    }
    ASSERT_EQ(cases.size(), 18U);

    int account = 15100;
    for (const auto& [machine, with, amount, ending] : cases) {
        client.login("49", std::to_string(++account));
        const auto path = "/v1/machines/" + machine + "/orders";
        const auto placed = client.ok("POST", path, payment(client, with, amount))["order"];
        EXPECT_EQ(placed["orderStatus"], "created");
        client.pass(10s);
        const auto order = "/v1/orders/" + placed["id"].get<std::string>() + "?statusOnly=false";
        EXPECT_EQ(client.get(order)["order"]["orderStatus"], ending) << machine << " " << with << " " << amount;
    }
}

TEST(Orders, StandWithDepositsInTheTransactionsThatAFilterAsksFor) {
    Client client;
    client.login();
    client.ok("POST", berlinCoffee, payment(client, "wallet", 150));
    client.pass(10s);
    client.ok("POST", berlinCoffee, payment(client, "card", 151));
    const auto locator = client.get("/v1/account?")["account"]["tokenLocators"][0]["locator"].get<std::string>();
    json deposit{
        {"paymentCardLocator", {{"locator", locator}}}, {"amount", 1000}, {"currency", "EUR"}, {"autoTopup", false}};
    EXPECT_EQ(client.ok("POST", "/v1/deposits/", deposit)["deposit"]["balance"], 5850);
    deposit["currency"] = "JPY";
    EXPECT_EQ(client.send("POST", "/v1/deposits/", deposit).message(), "currency must be EUR");
    for (const auto& [query, expected] : std::vector<std::pair<std::string, std::vector<int>>>{
             {"", {151, 1000, 150, 160, 100, 150}},
             {"limit=2", {151, 1000}},
             {"machine_id=2001", {151, 150, 150}},
             {"card_id=" + locator, {151, 1000}},
             {"card_id=0&paymentSource=1", {150, 160, 100, 150}},
             {"paymentSource=99", {}},
             {"beforeAuTime=2024-03-05T14:07:09.250", {160, 100, 150}},
         }) {
        std::vector<int> amounts;
        for (const auto& order : client.get("/v1/orders/activities?" + query)) amounts.push_back(order["amount"]);
        EXPECT_EQ(amounts, expected) << query;
    }
}

}  // namespace
}  // namespace kavio::test
