#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace kavio::command_line {

/// "; did you mean X?" if one of the known words is close to what was typed, otherwise a full stop.
std::string didYouMean(const std::string& typed, const std::vector<std::string>& known);

/// The names of the program's commands.
std::vector<std::string> commandNames(const CLI::App& program);

/// What is wrong with the command line that `program` has refused, as a sentence.
std::string mistakeIn(const CLI::App& program, const CLI::ParseError& problem);

}  // namespace kavio::command_line
