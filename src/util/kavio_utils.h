#pragma once

#include <kavio/platform/device.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// The signature of requests, and text helpers. Safe from any thread.
class KavioUtils {
public:
    KavioUtils() = delete;

    /// The value of the signature header for a request to `url` with `body`: 33 characters. It binds the request to the
    /// server-corrected time and proves no identity: no secret enters it.
    static std::string signRequest(std::string_view url, std::string_view body);
    /// URL-safe base64 whose padding is replaced by its count.
    static std::string urlTokenEncode(std::string_view bytes);
    /// Two lower-case hexadecimal digits a byte.
    static std::string hexDigest(const Digest::Sha1& digest);
    /// The server-corrected time as yyyyMMddHHmmss in UTC.
    static std::string serverTimeStamp();
    /// Every match of `pattern` anywhere in `text`, in order; none for an invalid pattern.
    static std::vector<std::string> matches(std::string_view pattern, std::string_view text);
    /// The first capture group of the first match.
    static std::optional<std::string> firstGroup(std::string_view pattern, std::string_view text);
};

}  // namespace kavio
