#include "sandbox/gallery.h"
#include "sandbox/sandbox.h"
#include "sandbox/signature.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <regex>
#include <string>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

/// A sandbox whose clock stands still, and a plain HTTPS client that signs as the library does.
class Client {
public:
    explicit Client(sandbox::Options options = {}) : service(clocked(std::move(options))) {}

    struct Answer {
        int status = 0;  // 0: no reply
        std::string body;
        json parsed() const { return json::parse(body, nullptr, false); }
        std::string message() const { return parsed().value("message", ""); }
    };
    /// Sends a request with all headers correct; `headers` replace them, and an empty one removes its header.
    Answer send(const std::string& method, const std::string& path, const json& body = nullptr,
                const httplib::Headers& headers = {}) {
        httplib::Request request;
        request.method = method;
        request.path = path;
        request.body = body.is_null() ? "" : body.dump();
        request.headers = {{"Host", "api-qa2.kavio.example"},
                           {"Content-Type", "application/json; charset=utf-8"},
                           {"X-Zelto-Wallet-Api-Key", "demo-key"},
                           {"lang", "en"}};
        if (!token.empty()) request.set_header("X-Zelto-Wallet-Session-Token", token);
        request.set_header("X-Zelto-Sign", sandbox::sign("https://api-qa2.kavio.example" + path, request.body,
                                                         sandbox::timeStamp(time)));
        for (const auto& [name, value] : headers) {
            request.headers.erase(name);
            if (!value.empty()) request.set_header(name.c_str(), value);
        }

        httplib::SSLClient client("127.0.0.1", service.port());
        client.set_ca_cert_path(service.authorityFile().c_str());
        client.enable_server_certificate_verification(true);
        const auto reply = client.send(request);
        return reply ? Answer{reply->status, reply->body} : Answer{};
    }
    /// Like `send`, but returns the reply's JSON; a reply other than 200 fails the test.
    json ok(const std::string& method, const std::string& path, const json& body = nullptr) {
        const auto answer = send(method, path, body);
        EXPECT_EQ(answer.status, 200) << method << " " << path << ": " << answer.body;
        return answer.parsed();
    }

    /// Logs in and keeps the token for the requests that follow.
    void login() {
        json phone{{"countryCode", "49"}, {"phoneNumber", "151234567"}};
        auto asked = phone;
        asked.update({{"challenge", ""}, {"retry", "0"}});
        phone.update({{"challenge", ok("POST", "/v1/account/challenge/", asked)["challenge"]["challenge"]},
                      {"verificationCode", "123456"},
                      {"retryTimeoutSeconds", "0"},
                      {"country", "DE"}});
        token = ok("POST", "/v1/account/verify/", phone)["token"]["token"];
    }

    const sandbox::TimePoint time{1'709'647'629'250ms};  // 2024-03-05T14:07:09.250
    std::string token;

private:
    sandbox::Options clocked(sandbox::Options options) const {
        options.clock = [this] { return time; };
        return options;
    }

public:
    sandbox::Sandbox service;
};

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

TEST(Service, ServesTheGallerysPageForEachOfItsCards) {
    Client client;
    client.login();
    int key = 10'000'000;
    for (const auto& page : sandbox::galleryPages()) {
        SCOPED_TRACE(page.name);
        const json browser{{"lang", "en"}, {"agent", "a"}, {"accept", "a"}, {"challengeWindow", 4},
                           {"color", 1},   {"width", 300}, {"height", 300}};
        const auto added =
            client.ok("POST", "/v1/account/locators/credorax/addCard",
                      {{"card", {{"number", page.number}, {"month", 1}, {"year", 2039}, {"securityCode", 7}}},
                       {"key", std::to_string(++key) + "-0000-0000-0000-000000000000"},
                       {"tdSecure",
                        {{"holder", {{"name", "Robin"}, {"email", "robin@kavio.example"}}},
                         {"browser", browser},
                         {"redirect", "http://127.0.0.1"}}}});
        if (page.flow == sandbox::Flow::fingerprint) {
            EXPECT_EQ(added.value("page", "").find("https://acs.kavio.example/acs/fingerprint/"), 0U) << added;
            continue;
        }
        const auto url = added.value("url", "");
        const auto start = "https://" + std::string(page.host) + ":" + std::to_string(client.service.port());
        ASSERT_EQ(url.find(start + "/acs/gallery/"), 0U) << added;
        const auto shown = client.send("GET", url.substr(start.size()));
        const auto expected = galleryReplies(page).front().reply;
        EXPECT_EQ(shown.status, expected.isLost ? 0 : expected.status);
        EXPECT_FALSE(std::regex_search(shown.body, std::regex("@[a-z]+@"))) << shown.body;
    }
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

}  // namespace
}  // namespace kavio::test
