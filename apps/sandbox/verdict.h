#pragma once

#include "times.h"

#include <httplib.h>

#include <chrono>
#include <string>

namespace kavio::sandbox {

/// What there is to say about the signature of a request.
enum class Verdict { valid, stale, wrong, missing };

/// `window` is how far the signature's time may be from `now`.
Verdict verdictOn(const httplib::Request& request, TimePoint now, std::chrono::seconds window);

/// A client that asks for the time may have a clock that starts in 1970, and signs by it.
bool asksForTime(const httplib::Request& request);

/// The URL that the client signed.
std::string signedUrl(const httplib::Request& request);

}  // namespace kavio::sandbox
