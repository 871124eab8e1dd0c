#pragma once

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::sandbox {

enum class Kind { text, integer, number, boolean, object, array };

struct Parameter {
    const char* name;
    Kind kind;
    bool required = false;
};
using Parameters = std::vector<Parameter>;

/// Throws a Refusal (400) that names the first parameter that is missing, of another kind, or not known.
/// `where` stands before the name, as in "paymentCard.number".
void checkParameters(const nlohmann::json& object, const Parameters& parameters, const std::string& where = {});

bool onlyDigits(std::string_view text);

/// The number that a text is, all of it; -1 when it is none.
std::int64_t numberFrom(std::string_view text);

/// A query as an object, each value read as the kind that the parameter has; what cannot be read so stays a text.
nlohmann::json queryParameters(const httplib::Params& query, const Parameters& parameters);

}  // namespace kavio::sandbox
