#pragma once

#include <kavio/platform/queues.h>

#include <cstddef>
#include <memory>
#include <string>

namespace kavio {

/// A work queue on up to `threads` threads of that name, each started when no other is idle. With one thread, it
/// is serial.
std::shared_ptr<WorkQueue> makeThreadQueue(std::string name, std::size_t threads);

}  // namespace kavio
