#pragma once

#include <kavio/delegate.h>

#include <string>

namespace kavio::bench {

/// The plain way to machines: a tree of the whole reply, members looked up by name, dates by the platform's formatter.
Machines decodePlainly(const std::string& reply);

}  // namespace kavio::bench
