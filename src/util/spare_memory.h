#pragma once

#include <cstddef>

namespace kavio {

/// Gives the system back what is free once a large reply has been read, when it goes out of scope. By itself, the C
/// library keeps that: it has learned from the large blocks which were freed that there will be more.
class SpareMemory {
public:
    explicit SpareMemory(std::size_t replyBytes) : mIsMuch(replyBytes >= muchFrom) {}
    ~SpareMemory();
    SpareMemory(const SpareMemory&) = delete;
    SpareMemory& operator=(const SpareMemory&) = delete;

private:
    // It takes longer to read as much than to look through the free memory.
    static constexpr std::size_t muchFrom = std::size_t{1024} * 1024;

    const bool mIsMuch;
};

}  // namespace kavio
