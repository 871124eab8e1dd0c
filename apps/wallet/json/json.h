#pragma once

#include <nlohmann/json.hpp>

namespace kavio::wallet {

/// What is written: members stay in the order in which they were put in.
using Json = nlohmann::ordered_json;

/// One line without its end. Bytes that are no UTF-8 are replaced, never refused.
inline std::string lineOf(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace kavio::wallet
