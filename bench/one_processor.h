#pragma once

#include <functional>

namespace kavio::bench {

/// Does the work while all threads of the process share its first processor, so that another process can have one for
/// itself. Otherwise, the system moves both about, and the caches with them.
void onOneProcessor(const std::function<void()>& work);

}  // namespace kavio::bench
