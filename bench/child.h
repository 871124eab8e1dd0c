#pragma once

#include "setup.h"

#include <string>

namespace kavio::bench {

/// Starts a measurement in a fresh process, in which nothing has been used before.
/// - "library-call", "bare-call": processor time of the first HTTPS call, in nanoseconds
/// - "idle": private memory of the platform and an idle facade, in bytes
/// - "start": a facade begins its first request
/// - "ready", "bare-ready": time until the platform and a facade, or libcurl alone, are ready, in nanoseconds
/// - "text", "peak", "stays": see `Residence`, in bytes
constexpr const char* childFlag = "--child";

/// In the child: writes the figure to standard output.
int runChild(const std::string& measurement, const Setup& setup);
/// In the parent: returns the best figure of several children.
double measureInChild(const std::string& measurement, const Setup& setup);
/// Nanoseconds from the start of a process to the first byte of its first request.
double timeToFirstRequest(const Setup& setup);

}  // namespace kavio::bench
