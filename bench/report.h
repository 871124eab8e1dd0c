#pragma once

#include "setup.h"

namespace kavio::bench {

/// Runs all benchmarks. Returns the table of all figures, in Markdown.
std::string report(const Setup& setup);

}  // namespace kavio::bench
