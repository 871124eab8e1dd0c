#pragma once

#include "json/arguments.h"
#include "json/json.h"

#include <kavio/platform/key_value_store.h>

#include <optional>

namespace kavio::wallet {

/// A text, {"date": ISO text}, {"data": base64 text}, or null for a missing value.
Json toJson(const std::optional<StoredValue>& value);

/// The member "value" of the same form; absent for null. Throws `Refused` when it is missing or of another form.
std::optional<StoredValue> storedValueIn(const Arguments& arguments);

}  // namespace kavio::wallet
