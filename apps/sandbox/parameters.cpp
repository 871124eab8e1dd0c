#include "parameters.h"

#include "reply.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <utility>

namespace kavio::sandbox {
namespace {

bool isInteger(const nlohmann::json& value) {
    return value.is_number_integer() &&
           (!value.is_number_unsigned() || std::in_range<std::int64_t>(value.get<std::uint64_t>()));
}

struct Form {
    const char* article;
    bool (*fits)(const nlohmann::json& value);
};

Form formOf(Kind kind) {
    using nlohmann::json;
    switch (kind) {
        case Kind::text:
            return {"a text", [](const json& value) { return value.is_string(); }};
        case Kind::integer:
            return {"an integer", isInteger};
        case Kind::number:
            return {"a number", [](const json& value) { return value.is_number(); }};
        case Kind::boolean:
            return {"true or false", [](const json& value) { return value.is_boolean(); }};
        case Kind::object:
            return {"an object", [](const json& value) { return value.is_object(); }};
        case Kind::array:
            return {"a list", [](const json& value) { return value.is_array(); }};
    }
    return {};
}

std::optional<Kind> kindOf(std::string_view name, const Parameters& parameters) {
    for (const auto& [kind, required, optional] : parameters)
        for (const auto* names : {&required, &optional})
            if (std::find(names->begin(), names->end(), name) != names->end()) return kind;
    return std::nullopt;
}

}  // namespace

void checkParameters(const nlohmann::json& object, const Parameters& parameters, const std::string& where) {
    if (!object.is_object())
        throw Refusal(400, where.empty() ? "the body is not a JSON object" : where + " must be an object");
    const auto prefix = where.empty() ? where : where + ".";
    for (const auto& parameter : parameters)
        for (const auto name : parameter.required)
            if (!object.contains(name)) throw Refusal(400, fmt::format("{}{} is missing", prefix, name));
    for (const auto& [name, value] : object.items()) {
        const auto kind = kindOf(name, parameters);
        if (!kind) throw Refusal(400, prefix + name + " is not a parameter of this request");
        const auto form = formOf(*kind);
        if (!form.fits(value)) throw Refusal(400, fmt::format("{}{} must be {}", prefix, name, form.article));
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

void readTarget(httplib::Request& request) {
    const auto queryStart = request.target.find('?');
    request.path = httplib::detail::decode_url(request.target.substr(0, queryStart), false);
    if (queryStart != std::string::npos)
        httplib::detail::parse_query_text(request.target.substr(queryStart + 1), request.params);
    if (request.get_header_value("Content-Type").starts_with("application/x-www-form-urlencoded"))
        httplib::detail::parse_query_text(request.body, request.params);
}

nlohmann::json queryParameters(const httplib::Params& query, const Parameters& parameters) {
    auto object = nlohmann::json::object();
    for (const auto& [name, text] : query) {
        const auto kind = kindOf(name, parameters).value_or(Kind::text);
        auto value = nlohmann::json::parse(text, nullptr, false);
        object[name] = kind != Kind::text && formOf(kind).fits(value) ? std::move(value) : nlohmann::json(text);
    }
    return object;
}

}  // namespace kavio::sandbox
