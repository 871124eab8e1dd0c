#pragma once

#include "models/json/json_value.h"
#include "models/json/simdjson_element.h"

#include <kavio/date.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// Does it for each `SimpleValue`.
#define KAVIO_FOR_SIMPLE_VALUES(DO)                                                                                \
    NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(DO, bool, std::string, std::string_view, double, float, std::int32_t, \
                                             std::int64_t, std::uint32_t, std::uint64_t, Date, JsonObject, JsonValue))

/// The members of an object, loosely typed. Null members are left out. A number with an integral value is an integer,
/// however it is spelled; other numbers are doubles.
JsonObject looseObject(Element object);

/// A value as it would be read as a member of an object; absent for null. The elements of an array follow another rule:
/// every number is a double, and null ends the array.
std::optional<JsonValue> looseValue(Element value);

/// How each simple value is read: `expectation` names what is accepted; `read` returns nothing for
/// anything else.
template <SimpleValue T>
struct Reading;

template <>
struct Reading<bool> {
    static constexpr std::string_view expectation = "a boolean";
    static std::optional<bool> read(simdjson::dom::element element) {
        bool value = false;
        return element.get_bool().get(value) == simdjson::SUCCESS ? std::optional(value) : std::nullopt;
    }
};

template <>
struct Reading<std::string_view> {
    static constexpr std::string_view expectation = "text";
    static std::optional<std::string_view> read(simdjson::dom::element element) {
        std::string_view text;
        return element.get_string().get(text) == simdjson::SUCCESS ? std::optional(text) : std::nullopt;
    }
};

template <>
struct Reading<std::string> : Reading<std::string_view> {
    static std::optional<std::string> read(simdjson::dom::element element) {
        return std::optional<std::string>(Reading<std::string_view>::read(element));
    }
};

template <>
struct Reading<double> {
    static constexpr std::string_view expectation = "a number";
    static std::optional<double> read(simdjson::dom::element element) {
        double value = 0;
        return element.get_double().get(value) == simdjson::SUCCESS ? std::optional(value) : std::nullopt;
    }
};

template <>
struct Reading<float> {
    static constexpr std::string_view expectation = "a single-precision number";
    static std::optional<float> read(simdjson::dom::element element) {
        const auto value = Reading<double>::read(element);
        if (!value || std::abs(*value) > std::numeric_limits<float>::max()) return std::nullopt;
        return static_cast<float>(*value);
    }
};

template <SimpleValue T>
requires std::integral<T>
struct Reading<T> {
    static constexpr std::string_view expectation = std::same_as<T, std::int32_t>    ? "a 32-bit integer"
                                                    : std::same_as<T, std::int64_t>  ? "an integer"
                                                    : std::same_as<T, std::uint32_t> ? "an unsigned 32-bit integer"
                                                                                     : "an unsigned integer";
    static std::optional<T> read(simdjson::dom::element element) { return integerOf<T>(element); }
};

template <>
struct Reading<Date> {
    static constexpr std::string_view expectation = "a date as a number";
    static std::optional<Date> read(simdjson::dom::element element) {
        constexpr std::chrono::sys_seconds reference = std::chrono::sys_days(std::chrono::January / 1 / 2001);
        const auto seconds = Reading<double>::read(element);
        if (!seconds) return std::nullopt;
        return reference + Date::duration(*seconds);
    }
};

template <>
struct Reading<JsonObject> {
    static constexpr std::string_view expectation = "an object";
    static std::optional<JsonObject> read(simdjson::dom::element element) {
        if (!element.is_object()) return std::nullopt;
        return looseObject(fromDom(element));
    }
};

template <>
struct Reading<JsonValue> {
    static constexpr std::string_view expectation = "any value";
    static std::optional<JsonValue> read(simdjson::dom::element element) {
        return looseValue(fromDom(element)).value_or(nullptr);
    }
};

}  // namespace kavio
