#pragma once

#include "models/json/json_types.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace kavio {

static_assert(std::is_same_v<JsonObject, JsonValue::object_t>);

/// The JSON text of `object`; absent when a number in it is not finite, or a text not well-formed UTF-8. It may hold a
/// card's number: apart from the text that is returned nothing of an object that is moved in stays in memory. On one
/// line, unless it is indented.
std::optional<std::string> serialise(JsonObject object, int indent = 0);

/// The member `key`; null when it is missing.
const JsonValue* find(const JsonObject& object, std::string_view key);
/// The member when it has that type; absent when it is missing or of another.
std::optional<std::int64_t> integerAt(const JsonObject& object, std::string_view key);
std::optional<std::string> textAt(const JsonObject& object, std::string_view key);

/// Puts the member in when there is a value.
template <class T>
void setIfPresent(JsonObject& object, const char* key, const std::optional<T>& value) {
    if (value) object.insert_or_assign(key, *value);
}

}  // namespace kavio
