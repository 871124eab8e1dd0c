#include <kavio/testing/eventually.h>

#include <thread>

namespace kavio::test {

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return condition();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));  // leaves the processor to whatever we wait for
    }
    return true;
}

}  // namespace kavio::test
