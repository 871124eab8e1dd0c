#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// Writes one line to standard output at once. Ends the program if that fails: nobody can read its reports.
void writeLine(const std::string& line);

/// Text for people, written at once. Goes on if that fails, because an order must be followed to its end.
void writeText(std::FILE* file, std::string_view text);

}  // namespace kavio::wallet
