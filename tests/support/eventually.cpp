#include "support/eventually.h"

#include <poll.h>

namespace kavio::test {

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return condition();
        ::poll(nullptr, 0, 1);  // leaves the processor to whom we wait for
    }
    return true;
}

}  // namespace kavio::test
