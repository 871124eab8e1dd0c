#pragma once

#include "sandbox/signature.h"
#include "wire.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace kavio::test {

using namespace std::chrono_literals;
using nlohmann::json;

/// A sandbox whose clock stands still, and a client that signs as the library does.
class Client {
public:
    explicit Client(sandbox::Options options = {})
        : version(options.http2 ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1),
          service(clocked(std::move(options))) {}

    /// Sends a request with all headers correct; `headers` replace them, and an empty one removes its header.
    Answer send(const std::string& method, const std::string& path, const json& body = nullptr,
                const httplib::Headers& headers = {}) {
        return Wire(service, version).send({signedAsk(method, path, body, headers)}).front();
    }
    Ask signedAsk(const std::string& method, const std::string& path, const json& body = nullptr,
                  const httplib::Headers& headers = {}) const {
        auto made = ask(method, path, body);
        auto& request = made.request;
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
        return made;
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
    const long version;                                  // of HTTP
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
