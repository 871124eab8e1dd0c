// Requests to the sandbox's service. Each is "METHOD TARGET", lines "NAME: VALUE", an empty line and a body; a line
// "---" ends it. Headers that every request needs are added where they are missing, with a signature that fits. The
// person with the number 49 151234567 is logged in.

#include "fuzz.h"
#include "sandbox/faults.h"
#include "sandbox/reply.h"
#include "sandbox/signature.h"

#include <kavio/testing/service.h>

#include <nlohmann/json.hpp>

namespace kavio::fuzz {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

constexpr std::string_view host = "https://api-qa2.kavio.example";
constexpr std::string_view faults = "/_sandbox/faults";

UrlRequest requestIn(Input text) {
    UrlRequest request;
    request.method = text.line(" ");
    request.url = std::string(host) + text.line();
    for (auto line = text.line(); !line.empty(); line = text.line()) {
        Input header(line);
        auto name = header.line(": ");
        request.headers.emplace_back(std::move(name), header.rest());
    }
    request.body = text.rest();
    return request;
}

struct World {
    const std::shared_ptr<test::Timeline> time = std::make_shared<test::Timeline>();
    test::Service service{time, {.unguessableText = [n = 0]() mutable { return "text-" + std::to_string(++n); }}};
    std::string token = "none yet";

    World() {
        const auto asked =
            send({.method = "POST",
                  .url = std::string(host) + "/v1/account/challenge/",
                  .body = R"({"countryCode":"49","phoneNumber":"151234567","challenge":"","retry":"0"})"});
        const auto verified = send({.method = "POST",
                                    .url = std::string(host) + "/v1/account/verify/",
                                    .body = json{
                                        {"countryCode", "49"},
                                        {"phoneNumber", "151234567"},
                                        {"challenge", asked["challenge"]["challenge"]},
                                        {"verificationCode", "123456"},
                                        {"retryTimeoutSeconds", "0"},
                                        {"country",
                                         "DE"}}.dump()});
        token = verified["token"]["token"];
    }

    /// What the service answers; null if it has no JSON.
    json send(UrlRequest request) {
        const auto has = [&](std::string_view name) {
            return std::ranges::any_of(request.headers, [&](const auto& header) { return header.first == name; });
        };
        const auto now = std::chrono::round<std::chrono::system_clock::duration>(time->now());
        const auto signature = sandbox::sign(request.url, request.body.value_or(""), sandbox::timeStamp(now));
        for (const auto& [name, value] : HeaderFields{{"Content-Type", "application/json; charset=utf-8"},
                                                      {"X-Zelto-Wallet-Api-Key", "key"},
                                                      {"X-Zelto-Wallet-Session-Token", token},
                                                      {"lang", "en"},
                                                      {"X-Zelto-Sign", signature}}) {
            if (!has(name)) request.headers.emplace_back(name, value);
        }
        const auto handled = service.handle(request);
        must(handled.reply.status >= 100 && handled.reply.status <= 599, "a reply has a status");
        const bool isApi = request.url.starts_with(std::string(host) + "/v1/");
        if (!isApi) return nullptr;
        auto reply = json::parse(handled.reply.body.value_or(""), nullptr, false);
        must(!reply.is_discarded(), "a reply is JSON");
        must(handled.reply.status == 200 || reply.contains("message"), "a refusal says why");
        return reply;
    }
};

/// As the endpoint reads it that controls the sandbox.
void readFault(const std::string& body) {
    try {
        const auto fault = sandbox::faultFrom(json::parse(body, nullptr, false));
        must(fault.status.value_or(200) >= 100 && fault.status.value_or(200) <= 599, "a fault's status is one of HTTP");
        must(fault.delay >= 0ms && fault.times != 0, "a fault happens");
    } catch (const sandbox::Refusal& refusal) {
        must(refusal.status == 400 && refusal.what()[0] != '\0', "a refusal says why");
    }
}

}  // namespace

void tryInput(Input input) {
    World world;
    for (int requests = 0; !input.isEmpty() && requests < 20; ++requests) {
        const auto request = requestIn(Input(input.line("\n---\n")));
        if (request.url.substr(host.size()) == faults) {
            readFault(request.body.value_or(""));
        } else {
            world.send(request);
        }
        world.time->letPass(1s);
    }
    must(world.service.balance().has_value(), "the person still has a wallet");
}

}  // namespace kavio::fuzz
