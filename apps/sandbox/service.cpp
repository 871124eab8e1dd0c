#include "service.h"

#include "verdict.h"

#include <iterator>
#include <optional>

namespace kavio::sandbox {
namespace {

/// The segments that match the stars; absent when the path does not match.
std::optional<std::vector<std::string>> match(std::string_view pattern, std::string_view path) {
    std::vector<std::string> captured;
    for (const char expected : pattern) {
        const auto matched = expected == '*' ? path.substr(0, path.find('/')) : path.substr(0, 1);
        if (matched.empty() || (expected != '*' && matched.front() != expected)) return std::nullopt;
        if (expected == '*') captured.emplace_back(matched);
        path.remove_prefix(matched.size());
    }
    return path.empty() ? std::optional{captured} : std::nullopt;
}

}  // namespace

void requireSignature(const httplib::Request& request, const World& world) {
    switch (verdictOn(request, world.now(), world.options.signatureWindow)) {
        case Verdict::valid:
            return;
        case Verdict::missing:
            throw Refusal(417, "X-Zelto-Sign is missing");
        case Verdict::stale:
            if (asksForTime(request)) return;
            throw Refusal(417, "the signature's time is too far from the service's");
        case Verdict::wrong:
            throw Refusal(417, "the signature does not belong to this body at " + signedUrl(request));
    }
}

Routes allRoutes() {
    Routes all;
    for (auto routes : {sessionRoutes(), machineRoutes(), orderRoutes(), paymentRoutes(), tdSecureRoutes()})
        std::move(routes.begin(), routes.end(), std::back_inserter(all));
    return all;
}

Service::Service(World& world) : mWorld(world), mRoutes(allRoutes()) {}

Reply Service::handle(const httplib::Request& request) {
    try {
        return dispatch(request);
    } catch (const Refusal& refusal) {
        return jsonReply({{"message", refusal.what()}}, refusal.status);
    }
}

Reply Service::dispatch(const httplib::Request& request) {
    if (!request.path.starts_with(basePath)) throw Refusal(404, "there is nothing at " + request.path);
    const auto path = std::string_view(request.path).substr(basePath.size());
    bool pathKnown = false;
    for (const auto& route : mRoutes) {
        auto captured = match(route.path, path);
        if (!captured) continue;
        pathKnown = true;
        if (route.method != request.method) continue;

        checkHeaders(request);
        Call call{mWorld, nullptr, std::move(*captured), nullptr,
                  request.get_header_value("X-Zelto-Wallet-Session-Token")};
        if (route.access == Access::session) {
            call.account = mWorld.accountOf(call.token);
            if (call.account == nullptr) throw Refusal(401, "the session token is invalid or has expired");
        }
        call.in = parametersOf(request, route);
        return jsonReply(route.handle(call));
    }
    if (pathKnown) throw Refusal(405, request.method + " is not allowed here");
    throw Refusal(404, "there is nothing at " + request.path);
}

void Service::checkHeaders(const httplib::Request& request) const {
    const auto key = request.get_header_value("X-Zelto-Wallet-Api-Key");
    if (key.empty()) throw Refusal(403, "X-Zelto-Wallet-Api-Key is missing");
    if (!mWorld.options.apiKey.empty() && key != mWorld.options.apiKey) throw Refusal(403, "unknown API key");
    if (request.get_header_value("Content-Type") != "application/json; charset=utf-8")
        throw Refusal(415, "Content-Type must be application/json; charset=utf-8");
    if (request.get_header_value("lang").empty()) throw Refusal(400, "lang is missing");
    requireSignature(request, mWorld);
}

nlohmann::json Service::parametersOf(const httplib::Request& request, const Route& route) const {
    const bool inBody = request.method == "POST";
    if (!inBody && !request.body.empty()) throw Refusal(400, "this request must not have a body");
    auto parameters = inBody ? nlohmann::json::parse(request.body, nullptr, false)
                             : queryParameters(request.params, route.parameters);
    checkParameters(parameters, route.parameters);
    return parameters;
}

}  // namespace kavio::sandbox
