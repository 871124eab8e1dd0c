#pragma once

#include "models/json/decoded_value.h"
#include "models/json/json_types.h"

#include <optional>

namespace kavio {

/// The members of an object, loosely typed. Null members are left out. Integers that are spelled as such, or as a
/// number with an integral value, are integers; other numbers are doubles.
JsonObject looseObject(Element object);

/// A value as it would be read as a member of an object; absent for null.
/// Elements of an array are read by another rule: every number is a double, and null ends the reading of the array.
std::optional<JsonValue> looseValue(Element value);

}  // namespace kavio
