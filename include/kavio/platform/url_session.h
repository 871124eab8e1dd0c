#pragma once

#include <kavio/export.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kavio {

/// Whether a request may reach the service more than once without harm.
enum class Idempotency {
    /// A lost connection may be answered by sending again, and a redirect may be followed.
    REPEATABLE,
    /// Once a byte of it may have reached the service the request is never sent again, and no redirect is followed.
    ONCE,
};

using HeaderFields = std::vector<std::pair<std::string, std::string>>;

struct UrlRequest {
    std::string method = "GET";
    /// Absolute URL, already percent-escaped. Another scheme than https is refused with `UrlError::badUrl`.
    std::string url;
    HeaderFields headers;
    std::optional<std::string> body;
    /// Without progress for this long the request fails with `UrlError::timedOut`.
    std::chrono::seconds timeout{60};
    Idempotency idempotency = Idempotency::ONCE;
};

/// A reply of any HTTP status: 404 and 500 are replies too.
struct UrlReply {
    int status = 0;
    /// Absent only where the platform knows that there was none; an empty body is present and empty.
    std::optional<std::string> body;
};

/// A reply whose body lies in a file. The file is gone once the completion has returned.
struct DownloadReply {
    int status = 0;
    std::filesystem::path file;
};

/// Why no reply came.
struct UrlError {
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
    int code = cancelled;
    /// A sentence for people that names the reason and no request data.
    std::string description;
    /// Download tasks only: the status, when the reply was lost after its head had arrived.
    std::optional<int> status;
};

/// HTTP as a device offers it: TLS always verified against the host in the URL, no cache, compressed replies decoded.
///
/// - A completion is called exactly once, on a thread of the session's own, and never inside the call that takes it.
/// - Every HTTP status is a reply; an error means that no whole reply came.
/// - A redirect is followed only for a REPEATABLE request and only within the same scheme, host and port; any other
///   redirect is the reply.
/// - A reply over `maximumReplyBytes`, decoded, fails with `UrlError::dataLengthExceedsMaximum`.
/// - Destroying the session completes what is still open with `UrlError::cancelled`, and returns when that is done.
class KAVIO_API UrlSession {
public:
    using Completion = std::function<void(std::variant<UrlReply, UrlError>)>;
    static constexpr std::uint64_t maximumReplyBytes = 32ULL * 1024 * 1024;

    virtual ~UrlSession() = default;
    virtual void dataTask(UrlRequest request, Completion completion) = 0;
};

/// HTTP that outlasts a lost network: a task without connectivity waits and tries again instead of failing.
/// All else is as `UrlSession` promises, and as for an ONCE request: nothing is sent again once a byte may have left.
class KAVIO_API BackgroundUrlSession {
public:
    using Completion = std::function<void(std::variant<DownloadReply, UrlError>)>;

    virtual ~BackgroundUrlSession() = default;
    virtual void downloadTask(UrlRequest request, Completion completion) = 0;
    /// `handler` is called, on the session's thread, each time the last open task has been completed.
    virtual void onEventsDelivered(std::function<void()> handler) = 0;
};

}  // namespace kavio
