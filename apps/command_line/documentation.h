#pragma once

#include <filesystem>

namespace CLI {
class App;
}

namespace kavio::command_line {

/// Writes the manual page of `program` and what completes its command line in bash, zsh and fish into `folder`, where
/// each of them has the place that it has in /usr/share. They are made from the same options that the program reads.
void writeDocumentation(const CLI::App& program, const std::filesystem::path& folder);

}  // namespace kavio::command_line
