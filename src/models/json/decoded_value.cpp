#include "models/json/decoded_value.h"

#include "models/json/decoding_error.h"
#include "models/json/json_value.h"
#include "models/json/loose_value.h"
#include "models/json/simdjson_element.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace kavio {
namespace {

using simdjson::dom::element_type;

std::string_view nameOf(DecodedValue::Kind kind) {
    switch (kind) {
        case DecodedValue::Kind::null:
            return "null";
        case DecodedValue::Kind::boolean:
            return "a boolean";
        case DecodedValue::Kind::number:
            return "a number";
        case DecodedValue::Kind::text:
            return "text";
        case DecodedValue::Kind::object:
            return "an object";
        case DecodedValue::Kind::array:
            return "an array";
    }
    return {};
}

template <class Integer>
Integer integer(const DecodedValue& value, std::string_view expected) {
    const auto integer = integerOf<Integer>(domElement(value.element()));
    if (!integer) value.refuse(expected);
    return *integer;
}

}  // namespace

std::string Path::text() const {
    if (!parent) return {};
    auto text = parent->text();
    if (name.empty()) return text + '[' + std::to_string(position) + ']';
    if (!text.empty()) text += '.';
    return text.append(name);
}

DecodedValue::Kind DecodedValue::kind() const {
    switch (domElement(mElement).type()) {
        case element_type::NULL_VALUE:
            return Kind::null;
        case element_type::BOOL:
            return Kind::boolean;
        case element_type::INT64:
        case element_type::UINT64:
        case element_type::DOUBLE:
            return Kind::number;
        case element_type::STRING:
            return Kind::text;
        case element_type::OBJECT:
            return Kind::object;
        case element_type::ARRAY:
            return Kind::array;
    }
    return Kind::null;
}

void DecodedValue::refuse(std::string_view expected) const {
    auto message = mPath.text();
    if (!message.empty()) message += ": ";
    throw DecodingError(message.append("expected ").append(expected).append(", found ").append(nameOf(kind())));
}

template <>
bool DecodedValue::simple() const {
    bool value = false;
    if (domElement(mElement).get_bool().get(value) != simdjson::SUCCESS) refuse("a boolean");
    return value;
}

template <>
std::string DecodedValue::simple() const {
    std::string_view value;
    if (domElement(mElement).get_string().get(value) != simdjson::SUCCESS) refuse("text");
    return std::string(value);
}

template <>
double DecodedValue::simple() const {
    double value = 0;
    if (domElement(mElement).get_double().get(value) != simdjson::SUCCESS) refuse("a number");
    return value;
}

template <>
float DecodedValue::simple() const {
    const auto value = simple<double>();
    if (std::abs(value) > std::numeric_limits<float>::max()) refuse("a single-precision number");
    return static_cast<float>(value);
}

template <>
std::int64_t DecodedValue::simple() const {
    return integer<std::int64_t>(*this, "an integer");
}

template <>
std::int32_t DecodedValue::simple() const {
    return integer<std::int32_t>(*this, "a 32-bit integer");
}

template <>
std::uint64_t DecodedValue::simple() const {
    return integer<std::uint64_t>(*this, "an unsigned integer");
}

template <>
std::uint32_t DecodedValue::simple() const {
    return integer<std::uint32_t>(*this, "an unsigned 32-bit integer");
}

template <>
Date DecodedValue::simple() const {
    constexpr std::chrono::sys_seconds reference = std::chrono::sys_days(std::chrono::January / 1 / 2001);
    return reference + Date::duration(simple<double>());
}

template <>
JsonObject DecodedValue::simple() const {
    if (kind() != Kind::object) refuse("an object");
    return looseObject(mElement);
}

template <>
JsonValue DecodedValue::simple() const {
    return looseValue(mElement).value_or(nullptr);
}

ArrayReader::ArrayReader(const DecodedValue& value) : mDocument(value.element().document), mPath(value.path()) {
    simdjson::dom::array array;
    if (domElement(value.element()).get_array().get(array) != simdjson::SUCCESS) value.refuse("an array");
    mNext = fromDom(*array.begin()).index;
    mEnd = fromDom(*array.end()).index;
    mExpectedCount = std::min<std::size_t>(array.size(), 1000);
}

DecodedValue ArrayReader::next() {
    const Element element{mDocument, mNext};
    auto iterator = std::bit_cast<simdjson::dom::array::iterator>(element);
    mNext = fromDom(*++iterator).index;
    return {element, Path{&mPath, {}, mPosition++}};
}

}  // namespace kavio
