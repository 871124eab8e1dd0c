#pragma once

#include <chrono>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace kavio::simulate {

/// What can happen. See the table in schedule.cpp for what the value of each means.
enum class Kind {
    // The person and the application.
    BUY,
    BUY_BY_CARD,
    DEPOSIT,
    ADD_CARD,
    ENROL,
    ASK_SESSION,
    ASK_METHODS,
    ASK_MACHINES,
    ASK_TRANSACTIONS,
    ASK_ORDER,
    SETTLE,
    FORGET,
    LOG_OUT,
    LOG_IN,
    RELEASE,
    DESTROY,
    DROP_DELEGATE,
    KILL_PROGRAM,
    SWITCH_SERVICE,
    CLOSE_PAGE,
    ANSWER_CHALLENGE,
    // The network.
    CUT,
    RESTORE,
    FATE,
    SLOWNESS,
    LATENESS,
    // The service.
    FAULT,
    CLOCK_OFFSET,
    END_SESSIONS,
    // The device.
    WALL_CLOCK,
    FULL_DISK,
    ROOM_ON_DISK,
    FAILING_WRITE,
};

struct Step {
    std::chrono::milliseconds after{0};  // the step before
    Kind kind = Kind::BUY;
    int facade = 0;  // 0 or 1
    std::int64_t value = 0;
};

/// What happens in one run. The same seed always makes the same one.
struct Schedule {
    std::uint64_t seed = 0;  // also for what the device and the service make up
    std::vector<Step> steps;
};

Schedule scheduleOf(std::uint64_t seed);

/// One line for the seed and one for each step, such as "+120 BUY 0 3".
std::string text(const Schedule& schedule);
/// Reads that; throws std::runtime_error with the line that is wrong.
Schedule parse(std::istream& in);

}  // namespace kavio::simulate
