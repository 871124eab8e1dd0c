#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace kavio::bench {

/// How much `work` allocates on this thread, whether it frees it again or not.
std::size_t allocatedBytes(const std::function<void()>& work);

/// How much decoding a reply with this many machines allocates.
double decodingBytes(std::int64_t machines);

}  // namespace kavio::bench
