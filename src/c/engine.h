#pragma once

#include "driver/options.h"

#include <memory>
#include <string_view>

namespace kavio::c {

/// What a session begins with.
struct Start {
    driver::Options options;
    std::shared_ptr<MainQueue> mainQueue;
};

/// Reads a session's options. Those of the process's first session install the platform and start the thread that the
/// main queue runs on. Throws `driver::Refused` for options that are wrong, or that differ from what the process
/// already uses. For any thread.
Start startWith(std::string_view options);

}  // namespace kavio::c
