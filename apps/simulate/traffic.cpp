#include "traffic.h"

#include "ledger.h"

namespace kavio::simulate {
namespace {

using test::Network;
constexpr std::array sessions{Network::Session::ORDINARY, Network::Session::BACKGROUND};

std::string hostOf(const std::string& url) {
    const auto start = url.find("://") + 3;
    return url.substr(start, url.find('/', start) - start);
}

std::string tokenOf(const UrlRequest& request) {
    for (const auto& [name, value] : request.headers)
        if (name == "X-Zelto-Wallet-Session-Token") return value;
    return "";
}

/// What stands between quotes after `key`; empty if nothing does.
std::string textAfter(const std::string& text, const std::string& key) {
    const auto found = text.rfind(key);
    if (found == std::string::npos) return "";
    const auto start = found + key.size();
    return text.substr(start, text.find('"', start) - start);
}

}  // namespace

void Traffic::note(const test::Device& device, const UrlRequest& request, const UrlReply& reply) {
    const auto body = reply.body.value_or("");
    countRequests(device);
    if (request.url.ends_with("/account/verify/") && reply.status == 200) {
        const auto token = textAfter(body, R"("token":")");
        if (!token.empty()) mHosts[token] = hostOf(request.url);
    }
    const auto token = tokenOf(request);
    if (!token.empty()) mLastToken = token;
    if (!token.empty() && (reply.status == 401 || reply.status == 406)) end(device, token);
    if (request.method == "POST" && request.body && (reply.status == 200)) {
        const auto amount = request.body->find(R"("amount":)");
        if (amount != std::string::npos) mAnswered.insert(std::stoll(request.body->substr(amount + 9)));
    }
}

void Traffic::noteLogout(const test::Device& device) {
    if (!mLastToken.empty()) end(device, mLastToken);
}

void Traffic::end(const test::Device& device, const std::string& token) {
    mEnds.try_emplace(token, End{.time = device.time().uptime()});
}

void Traffic::countRequests(const test::Device& device) {
    constexpr std::chrono::seconds longestWait{65};
    for (auto& [token, end] : mEnds) {
        if (!end.requests.empty() || device.time().uptime() < end.time + longestWait) continue;
        for (const auto session : sessions) end.requests[session] = device.network().requests(session).size();
    }
}

void Traffic::check(const test::Device& device) const {
    for (const auto session : sessions) {
        const auto requests = device.network().requests(session);
        for (std::size_t i = 0; i < requests.size(); ++i) {
            const auto token = tokenOf(requests[i]);
            if (token.empty()) continue;
            const auto host = mHosts.find(token);
            if (host != mHosts.end() && host->second != hostOf(requests[i].url))
                throw Violation("a token stays with its service", requests[i].url);
            const auto ended = mEnds.find(token);
            if (ended == mEnds.end() || ended->second.requests.empty()) continue;
            if (i >= ended->second.requests.at(session))
                throw Violation("a token does not outlive its end", requests[i].url);
        }
    }
}

}  // namespace kavio::simulate
