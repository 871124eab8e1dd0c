#pragma once

#include "models/json/json_value.h"
#include "network/stored_state.h"

#include <kavio/platform/url_session.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// How a request's parameters travel: "json" as the JSON body, "path" as the URL's query.
enum class ParameterEncoding { json, path };

/// One call to the service: everything that the transport is told about it.
struct APIRequest {
    /// Tells requests apart in trace lines, and the time request from all others.
    std::string_view requestName;
    std::string_view method;
    ParameterEncoding encoding;
    /// Whether it may be sent again when its connection is lost.
    Idempotency idempotency;
    /// Path below the base URL, placeholders filled.
    std::string endpoint;
    std::optional<Parameters> params = std::nullopt;
    /// The session token, with its issuer as it was known when the request was made: a request may wait, and another
    /// session may have begun when it goes out. Absent for calls made before login.
    std::optional<SessionToken> token = std::nullopt;
    /// The store when the request was made, or when it has waited.
    StoredState stored{};
    /// An absolute URL that replaces base URL and endpoint.
    std::optional<std::string> url = std::nullopt;
    /// Headers that replace the service's usual ones; the signature is added to either.
    std::optional<HeaderFields> headers = std::nullopt;
    /// See `UrlRequest::willWait`.
    std::function<void()> willWait = nullptr;
};

}  // namespace kavio
