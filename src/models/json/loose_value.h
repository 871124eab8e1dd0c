#pragma once

#include "models/json/decoded_value.h"
#include "models/json/json_types.h"

#include <optional>

namespace kavio {

/// The members of an object, loosely typed. Null members are left out. A number with an integral value is an integer,
/// however it is spelled; other numbers are doubles.
JsonObject looseObject(Element object);

/// A value as it would be read as a member of an object; absent for null. The elements of an array follow another rule:
/// every number is a double, and null ends the array.
std::optional<JsonValue> looseValue(Element value);

}  // namespace kavio
