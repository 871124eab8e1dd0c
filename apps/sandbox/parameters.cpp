#include "parameters.h"

#include "reply.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

namespace kavio::sandbox {
namespace {

const char* article(Kind kind) {
    switch (kind) {
        case Kind::text:
            return "a text";
        case Kind::integer:
            return "an integer";
        case Kind::number:
            return "a number";
        case Kind::boolean:
            return "true or false";
        case Kind::object:
            return "an object";
        case Kind::array:
            return "a list";
    }
    return "";
}

bool fitsSigned(const nlohmann::json& value) {
    return !value.is_number_unsigned() ||
           value.get<std::uint64_t>() <= std::uint64_t(std::numeric_limits<std::int64_t>::max());
}

bool isOf(Kind kind, const nlohmann::json& value) {
    switch (kind) {
        case Kind::text:
            return value.is_string();
        case Kind::integer:
            return value.is_number_integer() && fitsSigned(value);
        case Kind::number:
            return value.is_number();
        case Kind::boolean:
            return value.is_boolean();
        case Kind::object:
            return value.is_object();
        case Kind::array:
            return value.is_array();
    }
    return false;
}

}  // namespace

void checkParameters(const nlohmann::json& object, const Parameters& parameters, const std::string& where) {
    if (!object.is_object()) throw Refusal(400, where.empty() ? "the body is no JSON object" : where + " is no object");
    const auto full = [&](const std::string& name) { return where.empty() ? name : where + "." + name; };
    for (const auto& parameter : parameters) {
        const auto value = object.find(parameter.name);
        if (value == object.end()) {
            if (parameter.required) throw Refusal(400, full(parameter.name) + " is missing");
        } else if (!isOf(parameter.kind, *value)) {
            throw Refusal(400, fmt::format("{} must be {}", full(parameter.name), article(parameter.kind)));
        }
    }
    for (const auto& member : object.items()) {
        const auto known = [&](const Parameter& parameter) { return member.key() == parameter.name; };
        if (std::none_of(parameters.begin(), parameters.end(), known))
            throw Refusal(400, full(member.key()) + " is no parameter of this request");
    }
}

bool onlyDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

std::int64_t numberFrom(std::string_view text) {
    std::int64_t number = 0;
    const auto* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc{} && read.ptr == end ? number : -1;
}

nlohmann::json queryParameters(const httplib::Params& query, const Parameters& parameters) {
    auto object = nlohmann::json::object();
    for (const auto& [name, text] : query) {
        object[name] = text;
        for (const auto& parameter : parameters) {
            if (parameter.name != name || parameter.kind == Kind::text) continue;
            auto value = nlohmann::json::parse(text, nullptr, false);
            if (isOf(parameter.kind, value)) object[name] = std::move(value);
        }
    }
    return object;
}

}  // namespace kavio::sandbox
