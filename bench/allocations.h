#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace kavio::bench {

/// How much `work` allocates on this thread, whether it frees it again or not.
std::size_t allocatedBytes(const std::function<void()>& work);

/// While it exists, the process gives no memory back to the system by itself.
struct KeptMemory {
    KeptMemory();
    ~KeptMemory();
    KeptMemory(const KeptMemory&) = delete;
    KeptMemory& operator=(const KeptMemory&) = delete;
};

/// How much decoding a reply with this many machines allocates.
double decodingBytes(std::int64_t machines);

/// What reading a reply does to the memory that the process has from the system.
struct Residence {
    double text;   // of the reply
    double peak;   // at most, with the text
    double stays;  // afterwards, beyond the objects
};
/// For a reply with 10,000 machines, in a process that has done nothing else.
Residence residenceOfLargeReply();

}  // namespace kavio::bench
