#pragma once

#include <fmt/format.h>
#include <libintl.h>

#include <string>
#include <utility>

// For all programs, in whatever namespace.
namespace kavio {

/// The text in the person's language, filled in like `fmt::format`. A program that has no translations, or has not
/// called `setlocale`, speaks English.
template <class... Values>
std::string tr(fmt::format_string<Values...> text, Values&&... values) {
    const fmt::string_view english = text;  // a literal, so it ends with a zero
    return fmt::vformat(gettext(english.data()), fmt::make_format_args(values...));
}

/// The same in the form that goes with a number, such as "one payment" and "{} payments".
template <class... Values>
std::string trn(fmt::format_string<Values...> one, fmt::format_string<Values...> several, std::size_t number,
                Values&&... values) {
    const fmt::string_view singular = one;
    const fmt::string_view plural = several;
    return fmt::vformat(ngettext(singular.data(), plural.data(), number), fmt::make_format_args(values...));
}

/// Marks a text of a table for the translators; `gettext` translates it where it is used.
constexpr const char* later(const char* text) { return text; }

}  // namespace kavio
