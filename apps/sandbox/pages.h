#pragma once

#include <string>

namespace kavio::sandbox {

/// A document without anything to see that reports the device and goes to `end`.
std::string fingerprintHtml(const std::string& end);

/// The page that asks for the code. `hint` says what was wrong before; with `answer` the page answers itself.
std::string challengeHtml(const std::string& lastDigits, const std::string& hint, const std::string& answer);

/// A page that goes on for ever.
std::string waitingHtml();

/// A page that leaves the rest to a frame.
std::string framedHtml(const std::string& frame);

std::string messageHtml(const std::string& message);

}  // namespace kavio::sandbox
