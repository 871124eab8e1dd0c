#pragma once

#include <CLI/CLI.hpp>

namespace kavio::wallet {

// What options with numbers take. The command line library's own reading clamps numbers that are out of range, and
// takes "010" for 8.

CLI::Validator wholeNumber();
CLI::Validator coordinate();

}  // namespace kavio::wallet
