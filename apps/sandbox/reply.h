#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <map>
#include <stdexcept>
#include <string>

namespace kavio::sandbox {

struct Reply {
    int status = 200;
    std::string body = {};
    std::string type = "application/json";
    std::map<std::string, std::string> headers = {};
    std::chrono::milliseconds delay{0};
};

/// What a request brought that is no UTF-8 has U+FFFD in its place.
inline Reply jsonReply(const nlohmann::json& body, int status = 200) {
    return {.status = status, .body = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
}

/// Thrown where a request turns out wrong, caught where handlers are called; becomes {"message": what()}.
struct Refusal : std::runtime_error {
    Refusal(int code, const std::string& message) : std::runtime_error(message), status(code) {}
    int status;
};

}  // namespace kavio::sandbox
