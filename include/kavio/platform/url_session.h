#pragma once

#include <kavio/export.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kavio {

/// Whether a request may reach the service more than once without harm.
enum class Idempotency {
    /// If a kept connection turns out to be dead before a reply, the request is sent once more on another one, byte for
    /// byte as it was. A redirect may be followed.
    REPEATABLE,
    /// Once a byte of the request may have reached the service, it is never sent again, and no redirect is followed.
    ONCE,
};

/// Names with their values.
using HeaderFields = std::vector<std::pair<std::string, std::string>>;

/// What to ask of a server.
struct UrlRequest {
    std::string method = "GET";  ///< such as "POST"
    /// Absolute URL, already percent-escaped. Any scheme other than https is refused with `UrlError::badUrl`.
    std::string url{};
    HeaderFields headers{};  ///< besides those that HTTP itself needs
    /// May hold a card number, so the session wipes it when it is done with it.
    std::optional<std::string> body{};
    /// After this long without progress, the request fails with `UrlError::timedOut`.
    std::chrono::seconds timeout{60};
    Idempotency idempotency = Idempotency::ONCE;  ///< whether it may be sent again
    /// A background session calls this, on its thread, each time before it begins to wait for a network.
    std::function<void()> willWait = nullptr;
};

/// A reply of any HTTP status: 404 and 500 are replies too.
struct UrlReply {
    int status = 0;  ///< such as 200
    /// Absent only where the platform knows that there was none; an empty body is present and empty.
    std::optional<std::string> body;
};

/// Why no reply came.
struct UrlError {
    /// The reasons that the library tells apart.
    enum Code : int {
        cancelled = -999,
        badUrl = -1000,
        timedOut = -1001,
        cannotFindHost = -1003,
        cannotConnectToHost = -1004,
        networkConnectionLost = -1005,
        notConnectedToInternet = -1009,
        badServerResponse = -1011,
        dataLengthExceedsMaximum = -1103,
        secureConnectionFailed = -1200,
        serverCertificateUntrusted = -1202,
    };
    int code = cancelled;  ///< a `Code`
    /// A sentence for people that names the reason and no request data.
    std::string description;
    /// Download tasks only: the status, if the reply was lost after its head had arrived.
    std::optional<int> status;
    /// False only if it is certain that no byte of the request has left the device: there was no route, the host was
    /// not found or refused the connection, TLS failed, or the request was cancelled before all that had succeeded.
    bool mayHaveBeenSent = true;
};

/// HTTP as a device offers it: TLS always verified against the host in the URL, no cache, compressed replies decoded.
///
/// - A completion is called exactly once, on a thread of the session, and never inside the call that takes it.
///   It is released when it has returned, or when memory ran out before it could be called.
/// - Every HTTP status is a reply; an error means that no whole reply came.
/// - A redirect is followed only for a REPEATABLE request and only within the same scheme, host and port; any other
///   redirect is the reply.
/// - A reply over `maximumReplyBytes`, decoded, fails with `UrlError::dataLengthExceedsMaximum`.
/// - A connection is reused only if nothing is waiting to be read from it, not even its end: what a server says unasked
///   is never taken for the answer to a later request. An ONCE request always gets a new connection, or one that has
///   just been shown to be alive, so that none fails because a server closes idle connections.
/// - `UrlError::notConnectedToInternet` means that the device has no route to the network. With a route, a host that
///   cannot be reached is `UrlError::cannotConnectToHost` or `UrlError::cannotFindHost`.
/// - Destroying the session completes what is still open with `UrlError::cancelled`, and returns when that is done.
class KAVIO_API UrlSession {
public:
    /// Takes the reply, or why there is none.
    using Completion = std::function<void(std::variant<UrlReply, UrlError>)>;
    /// The most bytes that the body of a reply may have once it is decoded.
    static constexpr std::uint64_t maximumReplyBytes = 32ULL * 1024 * 1024;

    virtual ~UrlSession() = default;
    /// Sends `request` and returns at once; `completion` gets the outcome.
    virtual void dataTask(UrlRequest request, Completion completion) = 0;
};

/// A request that a background session carries out. Letting go of this object does not affect the request.
class KAVIO_API DownloadTask {
public:
    virtual ~DownloadTask() = default;
    /// Gives the request up, unless it may have left. True: no byte of it has left or ever will, and its completion
    /// gets `UrlError::cancelled`, but never inside this call. False: it may have left, and goes on to its own outcome
    /// or has already had one. May be called more than once, even after the session's end.
    virtual bool cancel() = 0;
};

/// HTTP that outlasts a lost network: a task without a route to the network waits and tries again instead of failing.
/// Everything else is as `UrlSession` promises for an ONCE request: nothing is sent again once a byte may have left.
/// Replies are kept in memory: an order that was placed must not look like a failure because a disk is full.
class KAVIO_API BackgroundUrlSession {
public:
    /// As of an ordinary session.
    using Completion = UrlSession::Completion;

    virtual ~BackgroundUrlSession() = default;
    /// Sends `request` once there is a route, and returns at once; `completion` gets the outcome.
    virtual std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) = 0;
    /// `handler` is called, on the session's thread, each time the last open task has been completed.
    virtual void onEventsDelivered(std::function<void()> handler) = 0;
};

}  // namespace kavio
