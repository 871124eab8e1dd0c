#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kavio::sandbox {

/// The start of every path of the API.
inline constexpr std::string_view basePath = "/v1";

/// A request as it arrived. Header names are in lower case. A header with an empty value is not listed, because the
/// underlying HTTP server skips it.
struct Request {
    std::string method;
    std::string host;
    std::string target;  // path and query as sent
    std::map<std::string, std::string> headers;
    std::string body;
};

}  // namespace kavio::sandbox
