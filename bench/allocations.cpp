#include "allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t bytesTaken = 0;

}  // namespace

void* operator new(std::size_t size) {
    bytesTaken += size;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace kavio::bench {

std::size_t allocatedBytes(const std::function<void()>& work) {
    const auto before = bytesTaken;
    work();
    return bytesTaken - before;
}

}  // namespace kavio::bench
