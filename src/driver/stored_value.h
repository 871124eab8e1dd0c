#pragma once

#include "driver/arguments.h"
#include "driver/json.h"

#include <kavio/platform/key_value_store.h>

#include <optional>

namespace kavio::driver {

/// A text, {"date": ISO text}, {"data": base64 text}, or null for a missing value.
Json toJson(const std::optional<StoredValue>& value);

/// Reads the member "value", which has the same form; absent for null. Throws `Refused` if it is missing or malformed.
std::optional<StoredValue> storedValueIn(const Arguments& arguments);

}  // namespace kavio::driver
