#pragma once

#include "models/json/json_value.h"

#include <kavio/platform/url_session.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

inline constexpr std::chrono::seconds REQUEST_TIMEOUT{60};

/// `base` and `component` with exactly one "/" between them. A trailing "/" stays, as does any "/" inside `component`;
/// what a path must not contain is percent-escaped.
std::string appendingPathComponent(std::string_view base, std::string_view component);

/// `url` with its query replaced by `query`; what a query must not contain is percent-escaped.
std::string settingQuery(std::string_view url, std::string_view query);

/// The entries of `params` as key=value joined with "&", unescaped; empty for none.
std::string queryText(const std::optional<Parameters>& params);

/// Whether `text` can be an absolute URL: it has a scheme, and no character that a URL must not contain.
bool isUrl(std::string_view text);

/// The request for `url`, with `params` as its query or as its JSON body. Without parameters there is no body, and the
/// query is empty, so that the URL ends with "?".
UrlRequest buildURLRequest(std::string url, std::optional<Parameters> params, bool inQuery);

}  // namespace kavio
