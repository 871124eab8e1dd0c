#include "interruption.h"

#include <atomic>

namespace kavio::wallet {

namespace {

/// Set by the signal handler, on whichever thread that runs.
std::atomic<bool> isNoted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler must not wait for a lock");

void note(int /*signal*/) { isNoted = true; }

}  // namespace

Interruption::Interruption() {
    sigaction(SIGINT, nullptr, &mBefore);
    if (mBefore.sa_handler == SIG_IGN) return;
    struct sigaction noting {};
    noting.sa_handler = note;
    noting.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigaction(SIGINT, &noting, nullptr);
}

Interruption::~Interruption() {
    sigaction(SIGINT, &mBefore, nullptr);
    isNoted = false;
}

void Interruption::check() {
    if (isNoted) throw Interrupted{};
}

void endInterrupted() {
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
}

}  // namespace kavio::wallet
