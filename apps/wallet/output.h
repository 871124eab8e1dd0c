#pragma once

#include "json/json.h"

#include <cstdio>
#include <string_view>

namespace kavio::wallet {

/// Writes one line to standard output at once. Ends the program when nobody can receive it.
void writeLine(const Json& json);

/// Text for people, at once. An order is followed to its end although nobody can read it any more.
void writeText(std::FILE* file, std::string_view text);
/// Whether all that was written to standard output has arrived.
bool isOutputComplete();

}  // namespace kavio::wallet
