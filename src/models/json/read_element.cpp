#include "models/json/read_element.h"

namespace kavio {
namespace {

using simdjson::dom::element_type;

JsonValue::array_t looseArray(simdjson::dom::array array) {
    JsonValue::array_t list;
    for (const auto element : array) {
        double number = 0;
        if (element.get_double().get(number) == simdjson::SUCCESS) {
            list.emplace_back(number);
        } else if (auto value = looseValue(fromDom(element))) {
            list.push_back(*std::move(value));
        } else {
            break;
        }
    }
    return list;
}

}  // namespace

JsonObject looseObject(Element value) {
    JsonObject members;
    for (const auto& [key, element] : simdjson::dom::object(domElement(value).get_object().value_unsafe())) {
        // If a member is repeated, the last one counts; if that is null, the member is missing.
        if (auto member = looseValue(fromDom(element))) {
            members.insert_or_assign(std::string(key), *std::move(member));
        } else if (const auto former = members.find(key); former != members.end()) {
            members.erase(former);
        }
    }
    return members;
}

std::optional<JsonValue> looseValue(Element value) {
    const auto element = domElement(value);
    switch (element.type()) {
        case element_type::NULL_VALUE:
            return std::nullopt;
        case element_type::BOOL:
            return Reading<bool>::read(element);
        case element_type::STRING:
            return Reading<std::string>::read(element);
        case element_type::INT64:
        case element_type::UINT64:
        case element_type::DOUBLE:
            if (const auto integer = integerOf<std::int64_t>(element)) return *integer;
            return Reading<double>::read(element);
        case element_type::OBJECT:
            return looseObject(value);
        case element_type::ARRAY:
            return looseArray(element.get_array().value_unsafe());
    }
    return std::nullopt;
}

}  // namespace kavio
