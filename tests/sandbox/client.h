#pragma once

#include "sandbox/sandbox.h"
#include "sandbox/signature.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace kavio::test {

using nlohmann::json;

/// A sandbox on a clock driven by hand, and a plain HTTPS client that signs as the library does.
class Client {
public:
    explicit Client(sandbox::Options options = {});

    struct Answer {
        int status = 0;  // 0: no reply
        std::string body;
        json parsed() const { return json::parse(body, nullptr, false); }
        std::string message() const { return parsed().value("message", ""); }
    };
    /// Sends a request with every header in order; `headers` replace them, an empty one takes its header out.
    Answer send(const std::string& method, const std::string& path, const json& body = nullptr,
                const httplib::Headers& headers = {});
    /// As `send`, and gives the reply's JSON; a reply that is not 200 fails the test.
    json get(const std::string& path) { return ok("GET", path); }
    json ok(const std::string& method, const std::string& path, const json& body = nullptr);

    /// Logs in and keeps the token for the requests that follow.
    void login(const std::string& countryCode = "49", const std::string& phoneNumber = "151234567",
               const std::string& country = "DE");

    sandbox::TimePoint time() const { return sandbox::TimePoint{std::chrono::milliseconds{mMilliseconds.load()}}; }
    void pass(std::chrono::milliseconds time) { mMilliseconds += time.count(); }
    std::vector<std::string> messages() const;

    std::string token;
    /// The client's own clock against the service's.
    std::chrono::seconds skew{0};

private:
    sandbox::Options connected(sandbox::Options options);

    std::atomic<std::int64_t> mMilliseconds{1'709'647'629'250};  // 2024-03-05T14:07:09.250
    mutable std::mutex mMutex;
    std::vector<std::string> mMessages;

public:
    sandbox::Sandbox service;
};

}  // namespace kavio::test
