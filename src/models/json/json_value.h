#pragma once

#include "models/json/json_types.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kavio {

static_assert(std::is_same_v<JsonObject, JsonValue::object_t>);

/// The JSON text of `object`; absent when a number in it is not finite, or a text is not well-formed UTF-8. It may hold
/// a card number: apart from the returned text, nothing of an object that is moved in stays in memory. On one line,
/// unless it is indented.
std::optional<std::string> serialise(JsonObject object, int indent = 0);

/// Leaves nothing of the object in memory. It takes no memory, unlike the destructor of an object with objects or lists
/// in it, which ends the program if there is none.
void wipe(JsonObject& object) noexcept;

/// An object that holds objects or lists, and perhaps a card number. Its destruction takes no memory and leaves nothing
/// in it.
struct NestedObject : JsonObject {
    using JsonObject::JsonObject;
    NestedObject(JsonObject object) noexcept : JsonObject(std::move(object)) {}
    NestedObject(NestedObject&&) noexcept = default;
    ~NestedObject() { wipe(*this); }
    NestedObject& operator=(NestedObject other) noexcept {
        swap(other);
        return *this;
    }

    /// Adds the member. It is moved, and not copied as a value in braces is.
    void add(const char* key, NestedObject members) { emplace(key, static_cast<JsonObject&&>(members)); }
};

/// The member `key`; null when it is missing.
const JsonValue* find(const JsonObject& object, std::string_view key);
/// The member if it has that type; absent if it is missing or has another type.
std::optional<std::int64_t> integerAt(const JsonObject& object, std::string_view key);
std::optional<std::string> textAt(const JsonObject& object, std::string_view key);

/// Adds the member if there is a value.
template <class T>
void setIfPresent(JsonObject& object, const char* key, const std::optional<T>& value) {
    if (value) object.insert_or_assign(key, *value);
}

}  // namespace kavio
