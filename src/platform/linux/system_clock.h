#pragma once

#include <kavio/platform/device.h>

#include <memory>

namespace kavio {

std::shared_ptr<Clock> makeSystemClock();

}  // namespace kavio
