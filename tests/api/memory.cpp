#include "memory.h"

#include "secrets.h"

#include <kavio/testing/boundary.h>

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

/// What is searched here is all memory that is freed, also where a shared library has allocated it.
extern "C" __attribute__((visibility("default"))) const char*
__asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
    return "alloc_dealloc_mismatch=0";
}

namespace kavio::test {
namespace {

std::atomic<bool> isWatching = false;
std::atomic<int> secretsFreed = 0;
std::atomic<long> allocationsLeft = 0;  // until one fails; 0 for none

void search(const void* block) {
    const auto has = [block, size = malloc_usable_size(const_cast<void*>(block))](
                         const void* bytes, std::size_t count) { return memmem(block, size, bytes, count) != nullptr; };
    if (has(&secret, sizeof secret) || has(secretText, std::strlen(secretText)) ||
        has(shortSecretText, std::strlen(shortSecretText)))
        ++secretsFreed;
}

bool mustFail() { return libraryDepth > 0 && allocationsLeft > 0 && --allocationsLeft == 0; }

}  // namespace

Watch::Watch() { secretsFreed = 0, isWatching = true; }
Watch::~Watch() { isWatching = false; }
int Watch::found() const { return secretsFreed; }

void failAllocation(long number) { allocationsLeft = number; }
bool stopFailing() { return allocationsLeft.exchange(0) == 0; }

}  // namespace kavio::test

// Of the whole program. Zeros, so that no block shows what an earlier one has left.
void* operator new(std::size_t size) {
    if (kavio::test::mustFail()) throw std::bad_alloc();
    if (void* block = std::calloc(1, size)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    if (block != nullptr && kavio::test::isWatching) kavio::test::search(block);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
