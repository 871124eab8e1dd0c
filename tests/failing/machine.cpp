#include "failing/machine.h"

#include <kavio/testing/boundary.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <new>

// This file stands between the whole program, with all its libraries, and the C library. Before anything else runs the
// loader allocates, so there is nothing here that must be constructed, and no sanitizer.

extern "C" {
std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));  // NOLINT(bugprone-reserved-identifier)
/// All of `new` is `malloc` here, also where a library of the sanitizer would tell them apart. Lack of memory is the
/// allocator's to report, not a reason to end the program. And a program that another library ends is to end with its
/// signal, not with the sanitizer's status.
__attribute__((visibility("default"))) const char* __asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
    return "alloc_dealloc_mismatch=0:handle_segv=0";
}
}

namespace kavio::test {
namespace {

constexpr std::chrono::milliseconds longestFailing{30};

std::atomic<bool> isCounting = false;
std::atomic<pthread_t> testThread{};
std::atomic<Call> failing{};
std::atomic<long> first = 0;
std::atomic<bool> goesOn = false;
std::atomic<std::chrono::steady_clock::duration> end{};  // of the failing
std::atomic<long> failed = 0;
std::atomic<long> counts[callNames.size()];

std::chrono::steady_clock::duration now() { return std::chrono::steady_clock::now().time_since_epoch(); }

bool isGoingOn() { return goesOn && (failing != Call::ALLOCATION || now() < end.load()); }

/// Whether this call is to fail.
bool refuses(Call call, int error) {
    if (!isCounting || (pthread_self() == testThread && libraryDepth == 0)) return false;
    const long number = ++counts[static_cast<std::size_t>(call)];
    if (call != failing || first == 0 || number < first || (number > first && !isGoingOn())) return false;
    if (number == first) end = now() + longestFailing;
    ++failed;
    errno = error;
    return true;
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void beginToFail(Call call, long number, bool lasts) {
    isCounting = false;
    for (auto& count : counts) count = 0;
    testThread = pthread_self();
    failing = call, first = number, goesOn = lasts, end = now() + longestFailing, failed = 0;
    isCounting = true;
}

CallCounts stopFailing() {
    isCounting = false;
    CallCounts counted{};
    for (std::size_t i = 0; i < counted.size(); ++i) counted[i] = counts[i];
    return counted;
}

long failures() { return failed; }

std::size_t bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) return __sanitizer_get_current_allocated_bytes();
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

}  // namespace kavio::test

// NOLINTBEGIN(cppcoreguidelines-no-malloc,misc-new-delete-overloads)
#pragma GCC visibility push(default)
extern "C" {

using kavio::test::Call;
using kavio::test::next;
using kavio::test::refuses;

void* malloc(std::size_t size) noexcept {
    static auto* const real = next<void*(std::size_t)>("malloc");
    return refuses(Call::ALLOCATION, ENOMEM) ? nullptr : real(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    static auto* const real = next<void*(std::size_t, std::size_t)>("calloc");
    return refuses(Call::ALLOCATION, ENOMEM) ? nullptr : real(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    static auto* const real = next<void*(void*, std::size_t)>("realloc");
    return refuses(Call::ALLOCATION, ENOMEM) ? nullptr : real(block, size);
}

// Nobody passes a mode without O_CREAT, and a mode that nobody asks for does no harm.
int open(const char* path, int flags, ...) {
    static auto* const real = next<int(const char*, int, ...)>("open");
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    return refuses(Call::OPEN, EMFILE) ? -1 : real(path, flags, mode);
}
int open64(const char* path, int flags, ...) __attribute__((alias("open")));  // no file here is that large
ssize_t read(int file, void* bytes, std::size_t count) {
    static auto* const real = next<ssize_t(int, void*, std::size_t)>("read");
    return refuses(Call::READ, EIO) ? -1 : real(file, bytes, count);
}
ssize_t pread64(int file, void* bytes, std::size_t count, off64_t offset) {
    static auto* const real = next<ssize_t(int, void*, std::size_t, off64_t)>("pread64");
    return refuses(Call::READ, EIO) ? -1 : real(file, bytes, count, offset);
}
ssize_t write(int file, const void* bytes, std::size_t count) {
    static auto* const real = next<ssize_t(int, const void*, std::size_t)>("write");
    return refuses(Call::WRITE, ENOSPC) ? -1 : real(file, bytes, count);
}
ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
    static auto* const real = next<ssize_t(int, const void*, std::size_t, off64_t)>("pwrite64");
    return refuses(Call::WRITE, ENOSPC) ? -1 : real(file, bytes, count, offset);
}
int fdatasync(int file) {
    static auto* const real = next<int(int)>("fdatasync");
    return refuses(Call::SYNC, EIO) ? -1 : real(file);
}
int unlink(const char* path) noexcept {
    static auto* const real = next<int(const char*)>("unlink");
    return refuses(Call::REMOVAL, EIO) ? -1 : real(path);
}
}

void* operator new(std::size_t size) {
    if (void* block = malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return malloc(size == 0 ? 1 : size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t& none) noexcept { return operator new(size, none); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
#pragma GCC visibility pop
// NOLINTEND(cppcoreguidelines-no-malloc,misc-new-delete-overloads)
