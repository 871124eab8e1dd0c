#pragma once

#include <kavio/date.h>

#include <unicode/unistr.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// The text without anything that a terminal would interpret: what the service sends is shown, never executed.
std::string printable(std::string_view text);

/// The text with the digits of any script, such as those of a Japanese or an Arabic keyboard, as 0 to 9.
std::string withAsciiDigits(std::string_view text);

/// Without marks that turn the direction of the text, which a table's columns would not survive.
std::string withoutMarks(const icu::UnicodeString& text);

/// To the minute, in the user's own time zone and notation, such as "2024-03-05 14:07".
std::string localTime(Date date);
///@{
/// The day alone, or the time of the day.
std::string localDay(Date date);
std::string timeOfDay(Date date);
///@}
/// The text with its first letter as a sentence begins.
std::string capitalized(std::string_view text);
/// Reads such a text, or a day, which begins at midnight; "2024-03-05 14:07" is read everywhere. Absent for any other
/// text.
std::optional<Date> dateFromLocalTime(const std::string& text);

}  // namespace kavio::wallet
