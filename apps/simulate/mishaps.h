#pragma once

#include <kavio/testing/device.h>

#include <cstdint>

namespace kavio::simulate {

/// What becomes of the next request, by the value of FATE.
test::Fate fate(std::int64_t number);
/// What the service does wrong, by the value of FAULT.
test::ServiceFault fault(std::int64_t number);

}  // namespace kavio::simulate
