#pragma once

#include "network/api_request.h"
#include "network/api_result.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// How a request ended before its body is decoded.
using RawResult = APIResult<std::string>;
using RawCompletion = std::function<void(RawResult)>;

/// Sends requests. A completion is called exactly once, on any thread, and never inside the call that takes it.
class NetworkServiceProtocol {
public:
    virtual ~NetworkServiceProtocol() = default;
    virtual void send(APIRequest request, RawCompletion completion) = 0;
    /// Like `send`, on a session that waits for connectivity and sends at most once. Null if the request can no longer
    /// be given up.
    virtual std::shared_ptr<DownloadTask> sendInBackground(APIRequest request, RawCompletion completion) = 0;
};

/// Takes over the classification of failures if one is installed. The library installs none.
class NetworkServiceErrorHandler {
public:
    using Completion = std::function<void(APIError error, std::optional<std::string> message)>;

    virtual ~NetworkServiceErrorHandler() = default;
    /// `response` is empty for a request that got no reply. Calls `completion` once, on any thread.
    virtual void handle(const UrlReply& response, Completion completion) = 0;
};

}  // namespace kavio
