#include "models/json/json_value.h"

#include <algorithm>
#include <cmath>

namespace kavio {
namespace {

// The JSON library writes such a number as null, which the service would take for an absent value.
bool isFinite(const JsonValue& value) {
    if (value.is_number_float()) return std::isfinite(value.get<double>());
    return std::all_of(value.begin(), value.end(), [](const JsonValue& element) {
        return !(element.is_structured() || element.is_number_float()) || isFinite(element);
    });
}

}  // namespace

std::optional<std::string> serialise(const JsonObject& object) {
    const JsonValue value(object);
    if (!isFinite(value)) return std::nullopt;
    try {
        return value.dump();
    } catch (const JsonValue::type_error&) {  // ill-formed UTF-8
        return std::nullopt;
    }
}

const JsonValue* find(const JsonObject& object, std::string_view key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &found->second;
}

std::optional<std::int64_t> integerAt(const JsonObject& object, std::string_view key) {
    const auto* value = find(object, key);
    if (!value || !value->is_number_integer()) return std::nullopt;
    return value->get<std::int64_t>();
}

std::optional<std::string> textAt(const JsonObject& object, std::string_view key) {
    const auto* value = find(object, key);
    if (!value || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

}  // namespace kavio
