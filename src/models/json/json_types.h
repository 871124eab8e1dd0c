#pragma once

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <map>
#include <string>

namespace kavio {

/// A loosely typed value; json_value.h has its definition.
using JsonValue = nlohmann::json;
/// The same, but the keys of an object keep their order.
using OrderedJsonValue = nlohmann::ordered_json;
/// A loosely typed object, and the body of a request.
using JsonObject = std::map<std::string, JsonValue, std::less<>>;
struct NestedObject;
/// Of a request.
using Parameters = NestedObject;

}  // namespace kavio
