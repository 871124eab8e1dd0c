#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// Writes one line to standard output at once. Ends the program when nobody can receive it.
void writeLine(const std::string& line);

/// Text for people, written at once. An order is followed to its end even when nobody can read it any more.
void writeText(std::FILE* file, std::string_view text);

}  // namespace kavio::wallet
