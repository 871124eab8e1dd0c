#pragma once

namespace kavio {

/// Prepares libcurl for the sessions of this process, once. Throws `std::bad_alloc` if it cannot be used.
void initializeLibraries();

/// Lets OpenSSL prepare, once, much of what it would otherwise prepare when it is first needed, such as all algorithms
/// of a kind. What it has no memory for then is missing until the process ends, so this is not left to the middle of an
/// operation. It takes about a millisecond, and nobody but a session needs it, so a session's own thread does it, while
/// the application goes on starting.
void prepareOpenssl();

}  // namespace kavio
