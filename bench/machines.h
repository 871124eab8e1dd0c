#pragma once

#include <cstdint>
#include <string>

namespace kavio::bench {

/// A reply with this many machines that have all their keys, and every second one a campaign. It has spare capacity,
/// like a body from the network.
std::string machinesReply(std::int64_t count);

}  // namespace kavio::bench
