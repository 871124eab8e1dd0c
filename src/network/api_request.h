#pragma once

#include "models/json/json_value.h"

#include <kavio/platform/url_session.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// How a request's parameters travel: "json" as the JSON body, "path" as the URL's query.
enum class ParameterEncoding { json, path };

/// One call of the service: all that the transport is told of it.
struct APIRequest {
    /// Tells requests apart in trace lines, and the time request from all others.
    std::string_view requestName;
    std::string_view method;
    ParameterEncoding encoding;
    /// Whether it may be sent again when its connection is lost.
    Idempotency idempotency;
    /// Path below the base URL, placeholders filled.
    std::string endpoint;
    std::optional<JsonObject> params = std::nullopt;
    /// The session token; absent for calls made before login.
    std::optional<std::string> token = std::nullopt;
    /// An absolute URL in the place of base URL and endpoint.
    std::optional<std::string> url = std::nullopt;
    /// Headers in the place of the service's own ones; the signature is added to either.
    std::optional<HeaderFields> headers = std::nullopt;
    /// See `UrlRequest::willWait`.
    std::function<void()> willWait = nullptr;
};

}  // namespace kavio
