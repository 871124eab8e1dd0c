#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// Writes one line to standard output at once. Ends the program if that fails, because nobody can read its reports
/// then.
void writeLine(const std::string& line);

/// Text for people, written at once. Goes on if that fails, because an order must be followed to its end even if nobody
/// reads it.
void writeText(std::FILE* file, std::string_view text);

}  // namespace kavio::wallet
