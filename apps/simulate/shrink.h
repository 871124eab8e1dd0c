#pragma once

#include "schedule.h"
#include "world.h"

namespace kavio::simulate {

/// The shortest schedule that can be found which breaks the same rule.
Schedule shrunk(Schedule schedule, const Failure& failure);

}  // namespace kavio::simulate
