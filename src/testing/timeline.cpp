#include <kavio/testing/boundary.h>
#include <kavio/testing/timeline.h>

#include <algorithm>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace kavio::test {
namespace {

using std::chrono::nanoseconds;

struct Work {
    Lane lane;
    std::function<void()> run;
};

}  // namespace

struct Timeline::State {
    const std::thread::id thread = std::this_thread::get_id();
    mutable std::mutex mutex;  // guards everything below but `lane`
    std::chrono::sys_time<nanoseconds> now = std::chrono::sys_days(std::chrono::January / 1 / 2024);
    nanoseconds uptime = std::chrono::hours(1);
    nanoseconds lastSerial{0};
    std::multimap<nanoseconds, Work> waiting;  // by the uptime at which it is due
    std::multimap<nanoseconds, Work> forgotten;
    std::optional<Lane> lane;  // whose work is running

    void moveTo(nanoseconds time) {
        const auto passed = std::max(time - uptime, nanoseconds(0));
        now += passed;
        uptime += passed;
    }

    /// Takes out what is due next, no later than `end`, and moves the time there.
    std::optional<Work> take(nanoseconds end) {
        const std::lock_guard lock(mutex);
        if (waiting.empty() || waiting.begin()->first > end) return std::nullopt;
        auto next = waiting.extract(waiting.begin());
        moveTo(next.key());
        return std::move(next.mapped());
    }

    void perform(Work work) {
        const auto before = std::exchange(lane, work.lane);
        const std::shared_ptr<void> restored(nullptr, [&](void*) { lane = before; });
        const InLibrary entered;
        const auto run = std::move(work.run);
        try {
            run();
        } catch (...) {
            if (work.lane == Lane::MAIN) throw;
        }
    }
};

Timeline::Timeline() : mState(std::make_unique<State>()) {}
Timeline::~Timeline() = default;

Date Timeline::now() const {
    const std::lock_guard lock(mState->mutex);
    return mState->now;
}

nanoseconds Timeline::uptime() const {
    const std::lock_guard lock(mState->mutex);
    return mState->uptime;
}

void Timeline::setWallClock(Date date) {
    const std::lock_guard lock(mState->mutex);
    mState->now = std::chrono::round<nanoseconds>(date);
}

void Timeline::post(Lane lane, nanoseconds delay, std::function<void()> work) {
    const auto late = lateness ? lateness(lane) : nanoseconds(0);
    const std::lock_guard lock(mState->mutex);
    auto due = mState->uptime + std::max(delay, nanoseconds(0)) + late;
    if (lane == Lane::SERIAL) due = mState->lastSerial = std::max(due, mState->lastSerial);
    mState->waiting.emplace(due, Work{lane, std::move(work)});
}

void Timeline::run() { letPass(nanoseconds(0)); }

void Timeline::letPass(nanoseconds time) {
    const auto end = uptime() + time;
    while (auto work = mState->take(end)) mState->perform(std::move(*work));
    const std::lock_guard lock(mState->mutex);
    mState->moveTo(end);
}

bool Timeline::runUntil(const std::function<bool()>& done, nanoseconds limit) {
    const auto end = uptime() + limit;
    while (!done()) {
        auto work = mState->take(end);
        if (!work) return letPass(end - uptime()), done();
        mState->perform(std::move(*work));
    }
    return true;
}

void Timeline::forget() {
    const std::lock_guard lock(mState->mutex);
    mState->forgotten.merge(mState->waiting);
}

void Timeline::clear() {
    decltype(State::waiting) waiting, forgotten;  // destroyed without the lock
    const std::lock_guard lock(mState->mutex);
    waiting.swap(mState->waiting);
    forgotten.swap(mState->forgotten);
}

std::size_t Timeline::waiting(Lane lane) const {
    const std::lock_guard lock(mState->mutex);
    return std::size_t(std::count_if(mState->waiting.begin(), mState->waiting.end(),
                                     [lane](const auto& entry) { return entry.second.lane == lane; }));
}

bool Timeline::isMain() const {
    return std::this_thread::get_id() == mState->thread && mState->lane.value_or(Lane::MAIN) == Lane::MAIN;
}

}  // namespace kavio::test
