#pragma once

#include <nlohmann/json.hpp>

namespace kavio::driver {

/// JSON for output: members stay in the order in which they were added.
using Json = nlohmann::ordered_json;

/// One line without its line end. Bytes that are not UTF-8 are replaced, never refused.
inline std::string lineOf(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace kavio::driver
