#pragma once

#include <string>
#include <string_view>

namespace kavio {

/// Whether a text of the document may name half of a surrogate pair.
bool mayHoldSurrogates(std::string_view json);

/// The same text with what the parser would refuse all of it for, though perhaps no record reads it: an integer beyond
/// 64 bits is spelled as a double, a number beyond the doubles becomes a list in a list, which no record reads, and
/// half of a surrogate pair becomes U+FFFD.
std::string toleratedText(std::string_view json);

}  // namespace kavio
