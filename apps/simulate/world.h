#pragma once

#include "ledger.h"
#include "schedule.h"

#include <functional>
#include <optional>
#include <string>

namespace kavio::simulate {

struct Failure {
    std::string rule;
    std::string what;
};

/// Runs the schedule on a fresh device, lets everything calm down, and checks every rule. Absent when all hold.
/// `listen` is told every report.
std::optional<Failure> run(const Schedule& schedule, const Listener& listen = nullptr);

}  // namespace kavio::simulate
