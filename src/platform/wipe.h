#pragma once

#include <cstddef>
#include <string>

namespace kavio {

/// Overwrites memory that held a secret, in a way that no compiler optimises away.
void wipe(void* bytes, std::size_t size) noexcept;
/// Leaves the text empty, and nothing of it in its storage.
void wipe(std::string& text) noexcept;

}  // namespace kavio
