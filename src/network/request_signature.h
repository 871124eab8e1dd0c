#pragma once

#include <string>
#include <string_view>

namespace kavio {

/// The value of the signature header for a request to `url` with `body`: 33 characters. It binds the request to the
/// server-corrected time but proves no identity, as no secret enters it. Safe from any thread.
std::string signRequest(std::string_view url, std::string_view body);
/// The same for the server's time `stamp`.
std::string signRequest(std::string_view url, std::string_view body, std::string_view stamp);

/// URL-safe base64 whose padding is replaced by its count.
std::string urlTokenEncode(std::string_view bytes);

}  // namespace kavio
