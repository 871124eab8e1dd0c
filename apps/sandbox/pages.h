#pragma once

#include <string>

namespace kavio::sandbox {

/// A document with nothing to see, which reports the device and then navigates to `end`.
std::string fingerprintHtml(const std::string& end);

/// The page that asks for the code. `hint` says what was wrong last time; with an `answer` the page answers itself.
std::string challengeHtml(const std::string& lastDigits, const std::string& hint, const std::string& answer);

/// A page that never ends.
std::string waitingHtml();

/// A page that leaves the rest to a frame.
std::string framedHtml(const std::string& frame);

std::string messageHtml(const std::string& message);

}  // namespace kavio::sandbox
