#pragma once

#include <initializer_list>
#include <string_view>

namespace CLI {
class App;
}

namespace kavio::command_line {

/// Adds the commands `help [COMMAND]` and `version`, for people who do not think of `--help`.
void addHelpCommands(CLI::App& program);

/// Adds examples of its arguments to what a command's help says.
void addExamples(CLI::App& command, std::initializer_list<std::string_view> examples);

/// Makes `--help` fit the terminal and speak the person's language. Call it when the command line is complete.
void prepareHelp(CLI::App& program);

}  // namespace kavio::command_line
