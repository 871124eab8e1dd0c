#pragma once

#include "platform/linux/url_session.h"
#include "sandbox/sandbox.h"
#include "sandbox/signature.h"

#include <kavio/testing/conformance/sessions.h>

#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace kavio::test {

using namespace std::chrono_literals;
using nlohmann::json;
using Headers = std::map<std::string, std::string>;

struct Answer {
    int status = 0;  // 0: no whole reply
    std::string body;

    json parsed() const { return json::parse(body, nullptr, false); }
    std::string message() const { return parsed().value("message", ""); }
};

/// A sandbox whose clock stands still, and a client that signs as the library does.
class Client {
public:
    explicit Client(sandbox::Options options = {}) : service(clocked(std::move(options))) {}

    /// Sends a request with all headers correct; `headers` replace them, and an empty one removes its header.
    Answer send(const std::string& method, const std::string& path, const json& body = nullptr,
                const Headers& headers = {}) {
        const auto url = "https://api-qa2.kavio.example" + path;
        const auto text = body.is_null() ? "" : body.dump();
        Headers all{{"Host", "api-qa2.kavio.example"},
                    {"Content-Type", "application/json; charset=utf-8"},
                    {"X-Zelto-Wallet-Api-Key", "demo-key"},
                    {"X-Zelto-Wallet-Session-Token", token},
                    {"X-Zelto-Sign", sandbox::sign(url, text, sandbox::timeStamp(time))},
                    {"lang", "en"}};
        for (const auto& [name, value] : headers) all[name] = value;
        std::erase_if(all, [](const auto& header) { return header.second.empty(); });
        const auto session = makeUrlSession({service.authorityFile(), service.address()});
        const auto outcome = fetch(*session, {method, url, {all.begin(), all.end()}, text});
        const auto* reply = std::get_if<UrlReply>(&outcome);
        return reply ? Answer{reply->status, reply->body.value_or("")} : Answer{};
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

}  // namespace kavio::test
