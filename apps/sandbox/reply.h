#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

namespace kavio::sandbox {

struct Reply {
    int status = 200;
    std::string body = {};
    std::string type = "application/json";
    std::map<std::string, std::string> headers = {};
    std::chrono::milliseconds delay{0};
    std::optional<std::chrono::milliseconds> drip = {};  // sends the body in pieces, with this pause before each
    std::optional<std::size_t> cutAfter = {};            // announces more than these bytes and closes the connection
    bool isLost = false;                                 // closes the connection instead; only over TLS
    std::uint64_t fault = 0;                             // the number of the fault that has shaped it; 0 for none
};

/// Anything that is not UTF-8, which can only come from the request, is replaced by U+FFFD.
inline Reply jsonReply(const nlohmann::json& body, int status = 200) {
    return {.status = status, .body = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
}

/// Thrown where a request turns out to be wrong, and turned into {"message": what()} where handlers are called.
struct Refusal : std::runtime_error {
    Refusal(int code, const std::string& message) : std::runtime_error(message), status(code) {}
    int status;
};

}  // namespace kavio::sandbox
