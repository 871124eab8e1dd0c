#pragma once

#include <kavio/platform/queues.h>

#include <cstddef>
#include <memory>
#include <string>

namespace kavio {

/// A work queue on up to `threads` threads of that name, each made when work finds no idle one. One thread makes
/// it serial.
std::shared_ptr<WorkQueue> makeThreadQueue(std::string name, std::size_t threads);

}  // namespace kavio
