#pragma once

#include <atomic>

namespace kavio {

/// Whether a request leaves the device or is given up: decided once, by whoever comes first. Safe from any thread.
class Departure {
public:
    /// Asked before the first byte goes out. False when the request was given up.
    bool leave() { return decide(State::LEFT); }
    /// False when a byte may have left, or the request has had its outcome.
    bool giveUp() { return decide(State::GIVEN_UP); }
    /// The request has an outcome. False when it had been given up.
    bool end() {
        decide(State::ENDED_HERE);
        return !isGivenUp();
    }
    bool hasLeft() const { return mState == State::LEFT; }
    bool isGivenUp() const { return mState == State::GIVEN_UP; }

private:
    enum class State { OPEN, LEFT, GIVEN_UP, ENDED_HERE };

    bool decide(State state) {
        State known = State::OPEN;
        return mState.compare_exchange_strong(known, state) || known == state;
    }

    std::atomic<State> mState = State::OPEN;
};

}  // namespace kavio
