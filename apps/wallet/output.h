#pragma once

#include "json/json.h"

namespace kavio::wallet {

/// Writes one line to standard output at once. Ends the program when nobody can receive it.
void writeLine(const Json& json);

}  // namespace kavio::wallet
