#pragma once

#include <sched.h>

#include <cstdlib>
#include <functional>
#include <thread>

namespace kavio::test {

/// Runs `test` with no network but what it makes itself. False if that is not permitted.
inline bool inFreshNetwork(const std::function<void()>& test) {
    bool permitted = false;
    std::thread([&] {
        permitted = ::unshare(CLONE_NEWNET) == 0;
        if (permitted) test();
    }).join();
    return permitted;
}

}  // namespace kavio::test
