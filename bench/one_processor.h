#pragma once

#include <sched.h>

namespace kavio::bench {

/// While it lives, the threads that the process has now share the first processor, so that another process can have
/// one for itself. Otherwise, the system moves both about, and the caches with them.
class OneProcessor {
public:
    OneProcessor();
    ~OneProcessor();
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;

private:
    cpu_set_t mBefore{};
};

}  // namespace kavio::bench
