#pragma once

#include "platform/linux/url_session_exchange.h"

#include <kavio/platform/url_session.h>

#include <chrono>
#include <optional>
#include <string>

namespace kavio {

/// The connection that a session keeps warm for the next query: the one that was used last. It is watched only while
/// libcurl has nothing to do, so that it cannot close the socket meanwhile.
class KeptConnection {
    using Steady = std::chrono::steady_clock;

public:
    /// The application has made this request.
    void expectAnother(const UrlRequest& request) {
        mRoot = request.url.substr(0, request.url.find('/', std::string_view("https://").size())) + '/';
        mUntil = Steady::now() + longestReading;
        mIsRenewed = false;
    }
    void use() { mSocket = CURL_SOCKET_BAD; }
    void release(CURL* easy) {
        mSocket = CURL_SOCKET_BAD;
        curl_easy_getinfo(easy, CURLINFO_ACTIVESOCKET, &mSocket);
        mIdleSince = Steady::now();
    }

    curl_socket_t socket() const { return mSocket; }
    Steady::time_point oldAt() const {
        return mSocket == CURL_SOCKET_BAD ? Steady::time_point::max() : mIdleSince + longestIdle;
    }
    /// A request that makes it anew, if that is due; `isEnded` says that the service has ended it. A service that ends
    /// the new one at once keeps no connections, and is not asked again.
    std::optional<UrlRequest> renewal(bool isEnded) {
        const auto now = Steady::now();
        if (!isEnded && now < oldAt()) return std::nullopt;
        mSocket = CURL_SOCKET_BAD;
        const bool isNotKept = mIsRenewed && now - mIdleSince < shortestKept;
        if (now > mUntil || isNotKept) return std::nullopt;
        mIsRenewed = true;
        UrlRequest request;
        request.url = mRoot;
        request.method = "OPTIONS";
        request.timeout = longestIdle;
        request.idempotency = Idempotency::REPEATABLE;
        return request;
    }

private:
    static constexpr std::chrono::minutes longestReading{2};
    static constexpr std::chrono::seconds shortestKept{3};

    std::string mRoot;
    Steady::time_point mUntil;
    curl_socket_t mSocket = CURL_SOCKET_BAD;
    Steady::time_point mIdleSince;
    bool mIsRenewed = false;
};

}  // namespace kavio
