#pragma once

namespace kavio {

/// Prepares libcurl, and OpenSSL as far as it must be, for the sessions of this process, once. To be called before
/// anything uses OpenSSL. Throws `std::bad_alloc` if they cannot be used.
void initializeLibraries();

/// Lets OpenSSL prepare, once, much of what it would otherwise prepare when it is first needed, such as all algorithms
/// of a kind. What it has no memory for then is missing until the process ends, so this is not left to the middle of an
/// operation. It takes about a millisecond, and sessions need most of it, so a session's own thread does it, while the
/// application goes on starting.
void prepareOpenssl();

}  // namespace kavio
