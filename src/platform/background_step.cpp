#include "platform/background_step.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <new>
#include <shared_mutex>
#include <type_traits>

namespace kavio {
namespace {

// Shared by the steps under way. Who ends them keeps it for itself.
std::shared_timed_mutex steps;
static_assert(std::is_trivially_destructible_v<std::shared_timed_mutex>);  // so it is there to the very end

std::atomic<bool> ended = false;

void endSteps() {
    // By the clock that can be set, as the thread sanitizer does not see a lock that is taken by the other one.
    if (!ended) ended = steps.try_lock_until(std::chrono::system_clock::now() + std::chrono::seconds(1));
}

}  // namespace

BackgroundStep::BackgroundStep() { steps.lock_shared(); }

BackgroundStep::~BackgroundStep() { steps.unlock_shared(); }

void BackgroundStep::endAtExit() {
    if (std::atexit(&endSteps) != 0) throw std::bad_alloc();
}

bool BackgroundStep::haveEnded() { return ended; }

}  // namespace kavio
