#include "client.h"

namespace kavio::test {
namespace {

/// Over HTTP/1.1 and over HTTP/2.
class Service : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Http2, Service, testing::Bool());

TEST_P(Service, RefusesWhatIsNotInOrder) {
    Client client({.apiKey = "demo-key", .http2 = GetParam()});
    client.login();
    struct Case {
        std::string request;
        Headers headers;
        json body;
        int status;
        std::string message;
    };
    const auto signedAt = [&](std::chrono::seconds off) {
        return Headers{{"X-Zelto-Sign", sandbox::sign("https://api-qa2.kavio.example/v1/account?", "",
                                                      sandbox::timeStamp(client.time + off))}};
    };
    const std::string get = "GET account?";
    const std::string locators = "POST account/locators";
    const auto card = [](const char* number) {
        const json object{
            {"number", number}, {"year", "30"}, {"month", "1"}, {"securityCode", "123"}, {"email", "a@b"}};
        return json{{"paymentCard", object}, {"key", "0A0A0A0A-0000-0000-0000-000000001000"}};
    };
    for (const auto& c : std::vector<Case>{
             {get, {}, nullptr, 200, ""},
             {get, signedAt(-300s), nullptr, 200, ""},
             {get, signedAt(301s), nullptr, 417, "the signature's time is too far from the service's"},
             {get + "os=x", signedAt(0s), nullptr, 417,
              "the signature does not belong to this body at https://api-qa2.kavio.example/v1/account?os=x"},
             {get, {{"X-Zelto-Wallet-Api-Key", "other"}}, nullptr, 403, "unknown API key"},
             {get, {{"Content-Type", "a/b"}}, nullptr, 415, "Content-Type must be application/json; charset=utf-8"},
             {get,
              {{"X-Zelto-Wallet-Session-Token", "old"}},
              nullptr,
              401,
              "the session token is invalid or has expired"},
             {get + "colour=red", {}, nullptr, 400, "colour is not a parameter of this request"},
             {"GET account/challenge/", {}, nullptr, 405, "GET is not allowed here"},
             {"POST account/challenge/", {}, json::object(), 400, "countryCode is missing"},
             {"POST machines/byValue", {}, {{"limit", 501}}, 400, "limit must be 1 to 500"},
             {"POST machines/42100107/orders", {}, {{"amount", 1}}, 400, "products is missing"},
             {"GET orders/5?statusOnly=maybe", {}, nullptr, 400, "statusOnly must be true or false"},
             {locators, {}, card("4111111111111112"), 400, "paymentCard.number is wrong"},
             {locators, {}, card("4000000000000002"), 402, "the card was declined"},
             {locators, {}, card("4000000000000002"), 400, "key was used before"},
             {"DELETE account/locators/none", {}, nullptr, 404, "there is no card with this locator"},
         }) {
        const auto space = c.request.find(' ');
        const auto path = "/v1/" + c.request.substr(space + 1);
        const auto answer = client.send(c.request.substr(0, space), path, c.body, c.headers);
        EXPECT_EQ(std::pair(answer.status, answer.status == 200 ? "" : answer.message()),
                  std::pair(c.status, c.message))
            << c.request;
    }
}

}  // namespace
}  // namespace kavio::test
