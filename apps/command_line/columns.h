#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::command_line {

/// The width of standard output if it is a terminal, otherwise that in the environment's COLUMNS. Absent if there is no
/// such limit.
std::optional<std::size_t> outputWidth();

/// How many columns the text takes on a terminal.
std::size_t columnsOf(std::string_view text);
/// Cuts the text to at most `columns`, and marks a cut with "…".
std::string cutTo(std::size_t columns, std::string_view text);
/// Breaks lines that are wider than `columns` between words; what is carried over begins with `indent` blanks.
std::string wrapped(std::string_view text, std::optional<std::size_t> columns, std::size_t indent = 0);

}  // namespace kavio::command_line
