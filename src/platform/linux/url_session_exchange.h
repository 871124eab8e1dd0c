#pragma once

#include "platform/linux/url_session_curl.h"

#include <kavio/platform/linux.h>
#include <kavio/platform/url_session.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kavio {

using UrlOutcome = std::variant<UrlReply, UrlError>;

/// A mobile network forgets idle connections without notice, and what is sent on one is lost.
inline constexpr std::chrono::seconds longestIdle{30};

/// How all requests of a session are sent.
struct UrlConduct {
    UrlConduct(const UrlSessionConfiguration& configuration, bool isBackground);

    /// The authorities to trust: in one PEM file, or in a folder where OpenSSL looks them up. The other one is empty.
    std::string authorityFile;
    std::string authorityFolder;
    CurlList connectTo;
    /// As a background session promises: each request on its own connection, and at most once.
    bool background;
    /// As `UrlSessionConfiguration::warmsConnection` says.
    bool warmsConnection;
};

/// Whether a request leaves the device or is given up: decided once, by whoever comes first. Safe from any thread.
class Departure {
public:
    /// Asked before the first byte goes out. False when the request was given up.
    bool leave() { return decide(State::LEFT); }
    /// False when a byte may have left, or the request has had its outcome.
    bool giveUp() { return decide(State::GIVEN_UP); }
    /// The request has an outcome. False when it had been given up.
    bool end() {
        decide(State::ENDED_HERE);
        return !isGivenUp();
    }
    bool hasLeft() const { return mState == State::LEFT; }
    bool isGivenUp() const { return mState == State::GIVEN_UP; }

private:
    enum class State { OPEN, LEFT, GIVEN_UP, ENDED_HERE };

    bool decide(State state) {
        State known = State::OPEN;
        return mState.compare_exchange_strong(known, state) || known == state;
    }

    std::atomic<State> mState = State::OPEN;
};

/// One request and what comes back for it, on libcurl's easy handles. Belongs to the network thread.
class UrlExchange {
public:
    UrlExchange(UrlRequest request, const UrlConduct& conduct);
    ~UrlExchange();
    UrlExchange(const UrlExchange&) = delete;
    UrlExchange& operator=(const UrlExchange&) = delete;

    /// Sets everything that `easy`, a new handle, needs to carry out the request. The exchange must not move until that
    /// is done. libcurl 7.88 does not forget all of an earlier reply: a header that goes on in the next one is written
    /// to memory that has been freed.
    CURLcode prepare(CURL* easy);
    /// Whether the reply is a redirect to follow; the request is then the one to `prepare` next.
    bool followRedirect(CURL* easy);
    /// Whether a kept connection was no use to the request, which must then be prepared again for a new one. After a
    /// byte may have left, this happens at most once, and only to a repeatable request.
    bool needsNewConnection(CURLcode code);
    UrlOutcome finish(CURL* easy, CURLcode code);
    /// Until when the request may be without a connection; absent once it has one.
    std::optional<std::chrono::steady_clock::time_point> connectsBy() const {
        const bool hasConnection = mAttempt.sent || !mAttempt.sockets.empty();
        return hasConnection ? std::nullopt : std::optional(mAttempt.connectsBy);
    }
    const std::shared_ptr<Departure>& departure() const { return mDeparture; }
    const UrlRequest& request() const { return mRequest; }
    void willWait() const {
        if (mRequest.willWait) mRequest.willWait();
    }

private:
    struct Callbacks;
    class Options;

    bool maySend(int localPort);
    bool mayTakeKeptConnection() const { return isRepeatable() && !mKeptConnectionsAreUseless; }
    bool isRepeatable() const { return !mConduct.background && mRequest.idempotency == Idempotency::REPEATABLE; }
    void setConnection(Options& options) const;
    void setLimits(Options& options);
    void setRequest(Options& options);
    void formHeaderLines();
    UrlReply takeReply(int status);
    void forgetBody();

    UrlRequest mRequest;
    const UrlConduct& mConduct;
    CURL* mEasy = nullptr;
    const std::shared_ptr<Departure> mDeparture = std::make_shared<Departure>();
    CurlLines mHeaderLines;
    std::string mBody;
    std::size_t mHeaderBytes = 0;
    int mRedirects = 0;
    bool mHeadIsWhole = false;
    bool mTooLarge = false;
    bool mKeptConnectionsAreUseless = false;
    bool mRepeated = false;

    /// What is known about the sending of the request since it was last prepared.
    struct {
        std::chrono::steady_clock::time_point connectsBy;
        std::vector<curl_socket_t> sockets;
        bool onKeptConnection = false;
        bool refusedStale = false;  // the kept connection was not silent; nothing was sent
        bool sent = false;
        bool refusedRepetition = false;  // libcurl wanted to send again
    } mAttempt;
};

}  // namespace kavio
