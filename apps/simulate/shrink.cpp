#include "shrink.h"

#include <algorithm>

namespace kavio::simulate {
namespace {

bool fails(const Schedule& schedule, const Failure& failure) {
    const auto found = run(schedule);
    return found && found->rule == failure.rule;
}

/// Leaves out `count` steps at a time where the failure stays.
bool leaveOut(Schedule& schedule, std::size_t count, const Failure& failure) {
    bool isShorter = false;
    for (std::size_t at = 0; at + count <= schedule.steps.size();) {
        auto shorter = schedule;
        const auto first = shorter.steps.begin() + std::ptrdiff_t(at);
        shorter.steps.erase(first, first + std::ptrdiff_t(count));
        if (fails(shorter, failure)) {
            schedule = std::move(shorter);
            isShorter = true;
        } else {
            ++at;
        }
    }
    return isShorter;
}

/// Makes pauses and values nothing where the failure stays.
void simplify(Schedule& schedule, const Failure& failure) {
    for (std::size_t i = 0; i < schedule.steps.size(); ++i) {
        auto simpler = schedule;
        simpler.steps[i].after = {};
        if (fails(simpler, failure)) schedule = simpler;
        simpler = schedule;
        simpler.steps[i].value = 0;
        if (fails(simpler, failure)) schedule = simpler;
    }
}

}  // namespace

Schedule shrunk(Schedule schedule, const Failure& failure) {
    for (auto count = std::max<std::size_t>(schedule.steps.size() / 2, 1); count > 0;) {
        if (!leaveOut(schedule, count, failure)) count /= 2;
    }
    simplify(schedule, failure);
    return schedule;
}

}  // namespace kavio::simulate
