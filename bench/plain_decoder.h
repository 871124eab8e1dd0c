#pragma once

#include <kavio/delegate.h>

#include <string>

namespace kavio::bench {

/// Decodes machines the plain way: a tree of the whole reply, members by name, dates by the platform's formatter.
Machines decodePlainly(const std::string& reply);

}  // namespace kavio::bench
