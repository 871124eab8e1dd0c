#pragma once

namespace kavio {

/// Prepares libcurl and OpenSSL for the sessions of this process, once. Throws `std::bad_alloc` if they cannot be used.
void initializeLibraries();

}  // namespace kavio
