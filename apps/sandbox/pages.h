#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kavio::sandbox {

/// What to put in the place of names such as "@end@".
using Values = std::vector<std::pair<std::string_view, std::string>>;
std::string filled(std::string_view text, const Values& values);
/// Besides the values, "@head@" is the start of each of the bank's pages, and "@style@" its style alone.
std::string filledPage(std::string_view page, const Values& values);

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
