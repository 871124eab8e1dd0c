#include "time/timer_tool.h"

#include "util/contained.h"

#include <kavio/platform/platform.h>

#include <chrono>

namespace kavio {

void TimerTool::delay(std::function<void()> action, std::int64_t milliseconds) {
    Platform::current().mainQueue->postAfter(std::chrono::milliseconds(milliseconds),
                                             [action = std::move(action)] { contained(action); });
}

}  // namespace kavio
