#include "schedule.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <sstream>
#include <stdexcept>

namespace kavio::simulate {
namespace {

struct KindInfo {
    Kind kind;
    const char* name;
    int weight;      // how often it happens
    int values = 1;  // its value is below this
};

constexpr KindInfo kinds[]{
    {Kind::BUY, "BUY", 24, 12},  // at this machine
    {Kind::BUY_BY_CARD, "BUY_BY_CARD", 8, 12},
    {Kind::DEPOSIT, "DEPOSIT", 12},
    {Kind::ADD_CARD, "ADD_CARD", 2},
    {Kind::ENROL, "ENROL", 6, 9},  // this test card
    {Kind::ASK_SESSION, "ASK_SESSION", 2},
    {Kind::ASK_METHODS, "ASK_METHODS", 3},
    {Kind::ASK_MACHINES, "ASK_MACHINES", 2},
    {Kind::ASK_TRANSACTIONS, "ASK_TRANSACTIONS", 3},
    {Kind::ASK_ORDER, "ASK_ORDER", 3},
    {Kind::SETTLE, "SETTLE", 12, 3},  // the oldest, the next…
    {Kind::FORGET, "FORGET", 1, 3},
    {Kind::LOG_OUT, "LOG_OUT", 1},
    {Kind::LOG_IN, "LOG_IN", 4},
    {Kind::RELEASE, "RELEASE", 3},
    {Kind::DESTROY, "DESTROY", 3},
    {Kind::DROP_DELEGATE, "DROP_DELEGATE", 2},
    {Kind::KILL_PROGRAM, "KILL_PROGRAM", 4},
    {Kind::SWITCH_SERVICE, "SWITCH_SERVICE", 2, 2},  // to the usual one, or to another
    {Kind::CLOSE_PAGE, "CLOSE_PAGE", 3},
    {Kind::ANSWER_CHALLENGE, "ANSWER_CHALLENGE", 3},
    {Kind::CUT, "CUT", 6},
    {Kind::RESTORE, "RESTORE", 8},
    {Kind::FATE, "FATE", 20, 12},                 // this one of those in mishaps.cpp
    {Kind::SLOWNESS, "SLOWNESS", 6, 3000},        // milliseconds for each way
    {Kind::LATENESS, "LATENESS", 3, 50},          // at most so many milliseconds for work off the main thread
    {Kind::FAULT, "FAULT", 10, 13},               // this one of those in mishaps.cpp
    {Kind::CLOCK_OFFSET, "CLOCK_OFFSET", 2, 60},  // seconds, and never a minute from one to another
    {Kind::END_SESSIONS, "END_SESSIONS", 2},
    {Kind::WALL_CLOCK, "WALL_CLOCK", 2, 7200},  // seconds forward, or back when odd
    {Kind::FULL_DISK, "FULL_DISK", 2},
    {Kind::ROOM_ON_DISK, "ROOM_ON_DISK", 3},
    {Kind::FAILING_WRITE, "FAILING_WRITE", 3, 4},  // the next but so many
};

const KindInfo& infoOf(Kind kind) {
    return *std::find_if(std::begin(kinds), std::end(kinds), [&](const auto& info) { return info.kind == kind; });
}

/// How long people and machines wait: mostly not at all, sometimes for a poll, seldom for minutes.
constexpr std::array<std::int64_t, 12> pauses{0, 0, 0, 1, 5, 20, 100, 300, 1000, 1000, 4000, 70'000};
constexpr std::size_t mostSteps = 14;

// Not a distribution of the standard library: those differ from one library to the next.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : mEngine(seed) {}
    std::int64_t below(std::int64_t limit) { return std::int64_t(mEngine() % std::uint64_t(limit)); }

private:
    std::mt19937_64 mEngine;
};

}  // namespace

Schedule scheduleOf(std::uint64_t seed) {
    static const int total = std::accumulate(std::begin(kinds), std::end(kinds), 0,
                                             [](int sum, const auto& info) { return sum + info.weight; });
    Dice dice(seed);
    Schedule schedule{.seed = seed, .steps = {}};
    const auto count = 2 + dice.below(mostSteps - 1);
    for (std::int64_t i = 0; i < count; ++i) {
        auto left = dice.below(total);
        const auto* info = std::begin(kinds);
        for (; left >= info->weight; ++info) left -= info->weight;
        const auto pause = pauses[std::size_t(dice.below(pauses.size()))];
        const bool isOther = dice.below(5) == 0;
        schedule.steps.push_back(
            {std::chrono::milliseconds(pause), info->kind, isOther ? 1 : 0, dice.below(info->values)});
    }
    return schedule;
}

std::string text(const Schedule& schedule) {
    std::ostringstream out;
    out << "seed " << schedule.seed << '\n';
    for (const auto& step : schedule.steps)
        out << '+' << step.after.count() << ' ' << infoOf(step.kind).name << ' ' << step.facade << ' ' << step.value
            << '\n';
    return out.str();
}

Schedule parse(std::istream& in) {
    Schedule schedule;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty()) continue;
        std::istringstream words(line);
        std::string word;
        if (line.starts_with("seed ") && words >> word >> schedule.seed) continue;
        char plus = 0;
        std::int64_t after = 0;
        Step step;
        const bool isRead = bool(words >> plus >> after >> word >> step.facade >> step.value);
        const auto* info =
            std::find_if(std::begin(kinds), std::end(kinds), [&](const auto& known) { return known.name == word; });
        if (!isRead || plus != '+' || after < 0 || step.facade < 0 || step.facade > 1 || info == std::end(kinds))
            throw std::runtime_error("this is not a step: " + line);
        step.after = std::chrono::milliseconds(after);
        step.kind = info->kind;
        schedule.steps.push_back(step);
    }
    return schedule;
}

}  // namespace kavio::simulate
