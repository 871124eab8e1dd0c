#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace kavio::bench {

/// What `work` takes from the heap on this thread, given back meanwhile or not.
std::size_t allocatedBytes(const std::function<void()>& work);

/// What decoding a reply of so many machines takes from the heap.
double decodingBytes(std::int64_t machines);

}  // namespace kavio::bench
