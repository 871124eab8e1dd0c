#include "client.h"
#include "sandbox/authority.h"

#include <gmock/gmock.h>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* berlinCoffee = "/v1/machines/42100107/orders";

/// Made by an implementation of its own in another language.
TEST(Signature, FitsValuesComputedElsewhere) {
    std::string families;
    for (int i = 0; i < 31; ++i) families += "👩‍👩‍👧‍👦";
    struct Case {
        std::string url, body, stamp, signature;
    };
    for (const auto& c : std::vector<Case>{
             {"https://api-qa2.kavio.example/v1/time?", "", "20200101100130", "4lp7yO6hQ_Yf7a5Hf0hMVLKeLvc800130"},
             {"https://API-QA2.kavio.example/v1/Orders/5?statusOnly=true", "", "20240229235959",
              "woGLswoehjtDpwPY8cZ8xUNQMGs-05959"},
             {"https://api.kavio.example:443/v1/account/challenge/",
              R"({"countryCode":"49","phoneNumber":"151234567","challenge":"","retry":"0"})", "20261124133653",
              "FUWM5XP2LH1oksLryiDgbZyNNN6b03653"},
             {"https://api-qa2.kavio.example/v1/a%E2%80%8Fb?", "", "20200101100130",
              "xXr-thj53yj6W3nC-yxQYxeihhMC00130"},
             {"https://h/v1/x", families + "e\u0301 and more", "20200101100130", "DbZX3f74J8Tr6cZ7L89_gbLFwvsn00130"},
             {"https://h/v1/x", "not UTF-8 \xff", "20200101100130", "DZQv5AH_EpKajaR1NoiMhGHgZPbK00130"},
         })
        EXPECT_EQ(sandbox::sign(c.url, c.body, c.stamp), c.signature) << c.url;
}

TEST(Authority, CertifiesEveryHostOfTheService) {
    const sandbox::Authority authority({"api.kavio.example", "localhost", "127.0.0.1"});
    EXPECT_EQ(X509_check_host(authority.server.get(), "api.kavio.example", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_host(authority.server.get(), "localhost", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ip_asc(authority.server.get(), "127.0.0.1", 0), 1);
    EXPECT_EQ(X509_check_host(authority.server.get(), "kavio.example", 0, 0, nullptr), 0);
    EXPECT_EQ(X509_verify(authority.server.get(), X509_get0_pubkey(authority.authority.get())), 1);
}

TEST(Service, RefusesWhatIsNotInOrder) {
    Client client({.apiKey = "demo-key"});
    client.login();
    const auto stamp = [&](std::chrono::seconds off) {
        return sandbox::sign("https://api-qa2.kavio.example/v1/account?", "", sandbox::timeStamp(client.time() + off));
    };
    struct Case {
        const char *method, *path;
        httplib::Headers headers;
        json body;
        int status;
        const char* message;
    };
    for (const auto& c : std::vector<Case>{
             {"GET", "/v1/account?", {}, nullptr, 200, ""},
             {"GET", "/v1/account?", {{"X-Zelto-Sign", stamp(-300s)}}, nullptr, 200, ""},
             {"GET",
              "/v1/account?",
              {{"X-Zelto-Sign", stamp(301s)}},
              nullptr,
              417,
              "the signature's time is too far from the service's"},
             {"GET", "/v1/account?", {{"X-Zelto-Sign", ""}}, nullptr, 417, "X-Zelto-Sign is missing"},
             {"GET",
              "/v1/account?os=x",
              {{"X-Zelto-Sign", stamp(0s)}},
              nullptr,
              417,
              "the signature does not belong to this body at https://api-qa2.kavio.example/v1/account?os=x"},
             {"GET",
              "/v1/account?",
              {{"Host", "api.kavio.example"}},
              nullptr,
              417,
              "the signature does not belong to this body at https://api.kavio.example:443/v1/account?"},
             {"GET",
              "/v1/account?",
              {{"X-Zelto-Wallet-Api-Key", ""}},
              nullptr,
              403,
              "X-Zelto-Wallet-Api-Key is missing"},
             {"GET", "/v1/account?", {{"X-Zelto-Wallet-Api-Key", "other"}}, nullptr, 403, "unknown API key"},
             {"GET",
              "/v1/account?",
              {{"Content-Type", "text/plain"}},
              nullptr,
              415,
              "Content-Type must be application/json; charset=utf-8"},
             {"GET", "/v1/account?", {{"lang", ""}}, nullptr, 400, "lang is missing"},
             {"GET",
              "/v1/account?",
              {{"X-Zelto-Wallet-Session-Token", "other"}},
              nullptr,
              401,
              "the session token is not valid, or not valid any more"},
             {"GET", "/v1/account?colour=red", {}, nullptr, 400, "colour is no parameter of this request"},
             {"GET", "/v1/nowhere", {}, nullptr, 404, "nothing here: /v1/nowhere"},
             {"GET", "/v1/account/challenge/", {}, nullptr, 405, "GET is not allowed here"},
             {"POST", "/v1/account/challenge", {}, json::object(), 404, "nothing here: /v1/account/challenge"},
             {"POST", "/v1/account/challenge/", {}, json::object(), 400, "countryCode is missing"},
             {"POST", "/v1/account/challenge/", {}, json::array(), 400, "the body is no JSON object"},
             {"POST", "/v1/machines/byValue", {}, {{"latitude", 1}}, 400, "latitude and longitude go together"},
             {"POST", "/v1/machines/byValue", {}, {{"limit", 501}}, 400, "limit must be 1 to 500"},
             {"POST", "/v1/machines/byValue", {}, {{"limit", true}}, 400, "limit must be an integer"},
             {"POST", berlinCoffee, {}, {{"amount", 1}}, 400, "products is missing"},
             {"POST", berlinCoffee, {}, {{"products", json::array()}}, 400, "amount is missing"},
             {"POST",
              berlinCoffee,
              {},
              {{"amount", 1}, {"products", {{{"productCode", 99}, {"quantityValue", 1}, {"pulseLineNumber", 0}}}}},
              400,
              "products.productCode names no product of this machine"},
             {"POST",
              "/v1/machines/1/orders",
              {},
              {{"amount", 1}, {"products", json::array()}},
              404,
              "no machine has this number"},
             {"GET", "/v1/orders/-5?statusOnly=false", {}, nullptr, 404, "no order has this number"},
             {"GET", "/v1/orders/5?statusOnly=maybe", {}, nullptr, 400, "statusOnly must be true or false"},
             {"DELETE", "/v1/account/locators/none", {}, nullptr, 404, "no card has this locator"},
         }) {
        const auto answer = client.send(c.method, c.path, c.body, c.headers);
        EXPECT_EQ(std::pair(answer.status, answer.status == 200 ? "" : answer.message()),
                  std::pair(c.status, std::string(c.message)))
            << c.path;
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
    const json phone{{"countryCode", "49"}, {"phoneNumber", "15199"}};
    auto ask = phone;
    ask.update({{"challenge", ""}, {"retry", "0"}});
    auto verify = phone;
    verify.update({{"challenge", client.ok("POST", "/v1/account/challenge/", ask)["challenge"]["challenge"]},
                   {"retryTimeoutSeconds", "0"},
                   {"country", "DE"},
                   {"verificationCode", "123456"}});
    EXPECT_THAT(client.messages(), ElementsAre("code for +49 15199 is 4711"));
    EXPECT_EQ(client.send("POST", "/v1/account/verify/", verify).message(), "verificationCode is wrong");
    verify["verificationCode"] = "4711";
    client.token = client.ok("POST", "/v1/account/verify/", verify)["token"]["token"];
    EXPECT_EQ(client.get("/v1/account?")["token"]["token"], client.token);
    EXPECT_EQ(client.send("POST", "/v1/account/verify/", verify).message(),
              "challenge is not valid, or not valid any more");
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
    struct Case {
        json query;
        std::vector<std::string> names;
    };
    const std::vector<std::string> japaneseCoffee{"Hot drinks, Yaesu"};
    for (const auto& c : std::vector<Case>{
             {{{"isByAccount", true}}, {"Espresso corner, Alexanderplatz", "Cooler, platform 2", "Snack wall"}},
             {{{"latitude", 52.5219}, {"longitude", 13.4132}, {"distance", 405}},
              {"Cooler, platform 2", "Espresso corner, Alexanderplatz", "Snack wall"}},
             {{{"latitude", 52.5219}, {"longitude", 13.4132}, {"limit", 1}}, {"Cooler, platform 2"}},
             {{{"latitude", 0}, {"longitude", 0}, {"country", "JP"}, {"operatorId", 9002}}, japaneseCoffee},
             {{{"machineType", 0}, {"country", "JP"}}, japaneseCoffee},
             {{{"uni_qr_scan", "https://qr.kavio.example/m/42101570"}}, japaneseCoffee},
             {{{"uni_qr_scan", "kavio://m/42101570?from=nfc"}}, japaneseCoffee},
             {{{"kavioMachineId", 42101570}, {"hwSerial", ""}, {"limit", 50}}, japaneseCoffee},
             {{{"kavioMachineId", 42101570}, {"hwSerial", "1"}}, {}},
             {{{"uni_qr_number", "73100251"}}, japaneseCoffee},
             {{{"hwSerial", "0434334921000285"}}, japaneseCoffee},
             {{{"machineId", 2211}, {"operatorId", 9001}}, {}},
         }) {
        std::vector<std::string> names;
        for (const auto& machine : client.ok("POST", "/v1/machines/byValue", c.query))
            names.push_back(machine["machineName"]);
        EXPECT_EQ(names, c.names) << c.query;
    }
}

TEST(Machines, ListTheirProductsInTheirCurrency) {
    Client client;
    client.login();
    std::vector<std::string> products;
    for (const auto& p : client.get("/v1/machines/2211/products?"))
        products.push_back(p["productName"].get<std::string>() + " " + p["preapidPrice"].dump());
    EXPECT_THAT(products, ElementsAre("Espresso 240", "Cappuccino 350", "Tea 190", "Hot chocolate 320"));
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
    struct Case {
        std::string machine;
        const char* with;
        int amount;
        std::string ending;
    };
    std::vector<Case> cases{{"42100107", "wallet", 5000, "completed"},
                            {"42100107", "wallet", 5001, "limitExceeded"},
                            {"42100107", "prepaid", 1500, "completed"},
                            {"42100107", "prepaid", 1501, "limitExceeded"},
                            {"42100107", "blocked prepaid", 1, "cardNotAllowed"},
                            {"42101570", "wallet", 100, "currencyMismatch"},
                            {"42101570", "card", 100, "completed"}};
    client.login();
    for (const auto& machine : client.ok("POST", "/v1/machines/byValue", {{"operatorId", 9099}}))
        cases.push_back({machine["kavioID"].dump(), "wallet", 1, machine["machineName"].get<std::string>().substr(8)});
    ASSERT_EQ(cases.size(), 18U);

    int account = 15100;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.machine + " " + c.with + " " + std::to_string(c.amount));
        client.login("49", std::to_string(++account));
        const auto placed =
            client.ok("POST", "/v1/machines/" + c.machine + "/orders", payment(client, c.with, c.amount));
        EXPECT_EQ(placed["order"]["orderStatus"], "created");
        client.pass(10s);
        const auto path = "/v1/orders/" + placed["order"]["id"].get<std::string>();
        EXPECT_EQ(client.get(path + "?statusOnly=false")["order"]["orderStatus"], c.ending);
    }
}

TEST(Orders, StandInTheTransactionsThatAFilterAsksFor) {
    Client client;
    client.login();
    client.ok("POST", berlinCoffee, payment(client, "wallet", 150));
    client.pass(10s);
    client.ok("POST", berlinCoffee, payment(client, "card", 151));
    const auto locator = client.get("/v1/account?")["account"]["tokenLocators"][0]["locator"].get<std::string>();
    client.ok(
        "POST", "/v1/deposits/",
        {{"paymentCardLocator", {{"locator", locator}}}, {"amount", 1000}, {"currency", "EUR"}, {"autoTopup", false}});
    struct Case {
        std::string query;
        std::vector<int> amounts;
    };
    for (const auto& c : std::vector<Case>{{"", {151, 1000, 150, 160, 100, 150}},
                                           {"limit=2", {151, 1000}},
                                           {"machine_id=2001", {151, 150, 150}},
                                           {"card_id=" + locator, {151, 1000}},
                                           {"card_id=0&paymentSource=1", {150, 160, 100, 150}},
                                           {"paymentSource=99", {}},
                                           {"beforeAuTime=2024-03-05T14:07:09.250", {160, 100, 150}}}) {
        std::vector<int> amounts;
        for (const auto& order : client.get("/v1/orders/activities?" + c.query)) amounts.push_back(order["amount"]);
        EXPECT_EQ(amounts, c.amounts) << c.query;
    }
}

TEST(Cards, AreAddedCheckedAndRemoved) {
    Client client;
    client.login("49", "15000");  // an account without cards
    const auto add = [&](const char* member, const char* value) {
        static int key = 1000;
        json card{
            {"number", "4111111111111111"}, {"year", "30"}, {"month", "1"}, {"securityCode", "123"}, {"email", "a@b"}};
        card[member] = value;
        return client.send(
            "POST", "/v1/account/locators",
            {{"paymentCard", card}, {"key", "0A0A0A0A-0000-0000-0000-00000000" + std::to_string(++key)}});
    };
    EXPECT_EQ(add("number", "4111111111111112").message(), "paymentCard.number is wrong");
    EXPECT_EQ(add("month", "13").message(), "paymentCard.month is wrong");
    EXPECT_EQ(add("year", "2023").message(), "paymentCard.year is wrong");
    EXPECT_EQ(add("securityCode", "12345").message(), "paymentCard.securityCode is wrong");
    EXPECT_EQ(add("number", "4000000000000002").message(), "the card was declined");
    const auto card = add("email", "robin@kavio.example").parsed()["locator"];
    EXPECT_EQ(client.get("/v1/account?")["account"]["tokenLocators"], json::array({card}));
    client.ok("DELETE", "/v1/account/locators/" + card["locator"].get<std::string>());
    EXPECT_THAT(client.get("/v1/account?")["account"]["tokenLocators"], IsEmpty());
}

TEST(Deposits, RaiseTheBalanceOfTheWalletOrTheCard) {
    Client client;
    client.login("81", "9012345", "JP");
    const auto locator = client.get("/v1/account?")["account"]["tokenLocators"][0]["locator"];
    const auto id = client.get("/v1/prepaidCards?")["prepaidCards"][0]["cardId"].dump();
    json body{
        {"paymentCardLocator", {{"locator", locator}}}, {"amount", 500}, {"currency", "JPY"}, {"autoTopup", false}};
    EXPECT_EQ(client.ok("POST", "/v1/deposits/", body)["deposit"]["balance"], 8500);
    EXPECT_EQ(client.ok("POST", "/v1/prepaidCards/" + id + "/deposits/", body)["deposit"]["balance"], 2100);
    EXPECT_EQ(client.get("/v1/account?")["account"]["balance"], 8500);
    body["currency"] = "EUR";
    EXPECT_EQ(client.send("POST", "/v1/deposits/", body).message(), "currency must be JPY");
}

}  // namespace
}  // namespace kavio::test
