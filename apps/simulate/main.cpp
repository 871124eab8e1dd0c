#include "command_line/numbers.h"
#include "command_line/start.h"
#include "plants.h"
#include "shrink.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace kavio::simulate;
using Clock = std::chrono::steady_clock;

void print(const std::string& text) {
    fmt::print("{}", text);
    std::fflush(stdout);
}

/// Prints why a schedule fails, and the shortest one that fails in the same way.
void explain(const Schedule& schedule, const Failure& failure) {
    print(fmt::format("seed {} breaks the rule \"{}\": {}\nthe shortest schedule found:\n{}", schedule.seed,
                      failure.rule, failure.what, text(shrunk(schedule, failure))));
}

Listener tell(std::uint64_t seed) {
    return [seed](const std::string& report) { fmt::print("{} {}\n", seed, report); };
}

int replay(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw std::runtime_error("cannot read " + file);
    const auto schedule = parse(in);
    const auto failure = run(schedule, tell(schedule.seed));
    print(failure ? fmt::format("breaks the rule \"{}\": {}\n", failure->rule, failure->what) : "every rule holds\n");
    return failure ? 1 : 0;
}

struct Range {
    std::uint64_t first = 1;
    std::uint64_t schedules = 1000;
    std::uint64_t jobs = 1;
    bool tells = false;  // every report
};

/// Every `jobs`-th seed of the range. Stops at the first failure, whose number is 1 or more, and says 0 without one.
int simulate(const Range& range, std::uint64_t job) {
    for (auto i = job; i < range.schedules; i += range.jobs) {
        const auto schedule = scheduleOf(range.first + i);
        const auto failure = range.tells ? run(schedule, tell(schedule.seed)) : run(schedule);
        if (!failure) continue;
        print(fmt::format("after {} schedules: ", i + 1));
        explain(schedule, *failure);
        return 1;
    }
    return 0;
}

[[noreturn]] void finishJob(int status) {
    std::fflush(stdout);
    ::_exit(status);
}

/// The library is one for the process, so each job is a process of its own.
int inProcesses(const Range& range) {
    const auto start = Clock::now();
    std::vector<pid_t> children;
    for (std::uint64_t job = 0; job < range.jobs; ++job) {
        const auto child = ::fork();
        if (child < 0) throw std::runtime_error("cannot start another process");
        if (child == 0) finishJob(simulate(range, job));
        children.push_back(child);
    }
    int failed = 0;
    for (const auto child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        if (status != 0) ++failed;
    }
    const auto seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (failed == 0)
        print(fmt::format("{} schedules from seed {}: every rule holds; {:.0f} per second\n", range.schedules,
                          range.first, double(range.schedules) / seconds));
    return failed == 0 ? 0 : 1;
}

int run(int argc, char** argv) {
    using kavio::command_line::wholeNumber;
    CLI::App app{
        "Runs the library through random schedules of mishaps on a simulated device, and checks the rules that "
        "must hold"};
    Range range;
    std::string file;
    std::string plant;
    bool lists = false;
    app.add_option("--seed", range.first, "The first seed")
        ->transform(wholeNumber(0, 1'000'000'000'000))
        ->capture_default_str();
    app.add_option("--schedules", range.schedules, "How many seeds")
        ->transform(wholeNumber(1, 1'000'000'000))
        ->capture_default_str();
    app.add_option("--jobs", range.jobs, "Processes side by side")
        ->transform(wholeNumber(1, 64))
        ->capture_default_str();
    app.add_flag("--reports", range.tells, "Prints every report that the application gets, after its seed");
    app.add_option("--replay", file, "Runs the schedule in this file instead, as printed for a failure");
    app.add_option("--plant", plant, "Switches on a fault in the library, which must be found");
    app.add_flag("--list-plants", lists, "Lists those faults");
    if (!kavio::command_line::parse(app, argc, argv)) return 0;
    if (lists) {
        for (const auto& name : plantedFaults()) print(name + "\n");
        return 0;
    }
    if (!plant.empty() && !switchOn(plant)) throw std::runtime_error("there is no fault of that name: " + plant);
    if (!file.empty()) return replay(file);
    return inProcesses(range);
}

}  // namespace

int main(int argc, char** argv) {
    return kavio::command_line::start(
        [&] { return run(argc, argv); },
        [](const std::string& sentence) { fmt::print(stderr, "kavio-simulate: {}\n", sentence); });
}
