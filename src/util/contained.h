#pragma once

#include <chrono>
#include <exception>
#include <new>
#include <thread>
#include <utility>

namespace kavio {

/// Does work of the library's own where nothing may be thrown. When memory runs out the work is left where it was; with
/// that the operation that it was done for is let go, and reports it.
template <class Work>
void contained(Work&& work) {
    try {
        std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch)
    }
}

/// Does what must be done even without memory: tries again until there is some. The process ends if that takes longer
/// than anybody would wait.
template <class Work>
auto insisted(Work work) noexcept {
    constexpr std::chrono::milliseconds pause{10};
    for (std::chrono::milliseconds left{10'000};; left -= pause) {
        try {
            return work();
        } catch (const std::bad_alloc&) {
            if (left <= std::chrono::milliseconds{0}) std::terminate();
        }
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace kavio
