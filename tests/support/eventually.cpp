#include "support/eventually.h"

#include <thread>

namespace kavio::test {

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return condition();
        std::this_thread::yield();
    }
    return true;
}

}  // namespace kavio::test
