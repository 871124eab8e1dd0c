#pragma once

#include "host/options.h"

namespace CLI {
class App;
}

namespace kavio::wallet {

/// Makes the command line fill `options`, which must outlive the parsing.
void addOptions(CLI::App& commandLine, Options& options);

}  // namespace kavio::wallet
