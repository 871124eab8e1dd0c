#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace kavio::command_line {

/// How every program here starts: prepares the process and does the work, which returns the exit status. Failures are
/// passed to `complain` as a sentence: status 2 for a wrong command line, 1 for any other exception and for output that
/// could not be written.
int start(const std::function<int()>& work, const std::function<void(const std::string& sentence)>& complain);

/// False when the command line asks for help or for the version, which is then shown, or, as the build does, with
/// `--write-documentation FOLDER` for what `writeDocumentation` writes. Call it from the work of `start`, which handles
/// what this throws.
bool parse(CLI::App& program, int argc, char** argv);

}  // namespace kavio::command_line
