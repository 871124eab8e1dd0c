#include "text.h"

#include <kavio/platform/platform.h>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace kavio::wallet {

namespace {

const DateFormat localMinute{"yyyy-MM-dd HH:mm", "en_US_POSIX", std::nullopt};
const DateFormat localDay{"yyyy-MM-dd", "en_US_POSIX", std::nullopt};

/// Calls `visit` with each code point of the text; U+FFFD stands for bytes that are not UTF-8.
template <class Visit>
void forEachCodePoint(std::string_view text, Visit visit) {
    const auto unicode = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    for (std::int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1)) visit(unicode.char32At(i));
}

void append(std::string& text, UChar32 codePoint) { icu::UnicodeString(codePoint).toUTF8String(text); }

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    forEachCodePoint(text, [&](UChar32 codePoint) {
        // Controls move the cursor, format characters turn the direction of the text, separators break the line.
        const bool isObeyed = U_GET_GC_MASK(codePoint) & (U_GC_CC_MASK | U_GC_CF_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK);
        append(result, isObeyed ? ' ' : codePoint);
    });
    return result;
}

std::string withAsciiDigits(std::string_view text) {
    std::string result;
    forEachCodePoint(text, [&](UChar32 codePoint) {
        const auto digit = u_charDigitValue(codePoint);
        append(result, digit < 0 ? codePoint : '0' + digit);
    });
    return result;
}

std::string localTime(Date date) { return Platform::current().dateFormatter->format(localMinute, date); }

std::optional<Date> dateFromLocalTime(const std::string& text) {
    const auto& formatter = *Platform::current().dateFormatter;
    // Where clocks go forward at midnight, the day begins at one o'clock.
    for (const auto& [format, whole] :
         {std::pair{localMinute, text}, {localDay, text}, {localMinute, text + " 01:00"}}) {
        const auto date = formatter.parse(format, whole);
        if (date && formatter.format(format, *date) == whole) return date;
    }
    return std::nullopt;
}

}  // namespace kavio::wallet
