#pragma once

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::sandbox {

enum class Kind { text, integer, number, boolean, object, array };

/// The parameters of one kind.
struct Parameter {
    Kind kind;
    std::vector<std::string_view> required;
    std::vector<std::string_view> optional = {};
};
using Parameters = std::vector<Parameter>;

/// Throws a Refusal (400) that names a parameter that is missing, of another kind, or unknown.
/// `where` stands before the name, as in "paymentCard.number".
void checkParameters(const nlohmann::json& object, const Parameters& parameters, const std::string& where = {});

bool onlyDigits(std::string_view text);

/// The number that the whole text spells; -1 when it spells none.
std::int64_t numberFrom(std::string_view text);

/// Fills in what an HTTP server reads from a request's target, and from the body of a form.
void readTarget(httplib::Request& request);

/// A query as an object. Each value is read as its parameter's kind; one that cannot be stays a text.
nlohmann::json queryParameters(const httplib::Params& query, const Parameters& parameters);

}  // namespace kavio::sandbox
