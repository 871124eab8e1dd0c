#pragma once

#include "driver/options.h"

#include <CLI/CLI.hpp>

namespace kavio::command_line {

/// Which service a wallet talks to, as whom, and where it keeps its session.
void addServiceOptions(CLI::App& program, driver::Options& options);

}  // namespace kavio::command_line
