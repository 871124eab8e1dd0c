#include "text.h"

#include "wording/language.h"

#include <kavio/platform/platform.h>

#include <unicode/dtptngen.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <memory>

namespace kavio::wallet {

namespace {

const DateFormat isoMinute{"yyyy-MM-dd HH:mm", "en_US_POSIX", std::nullopt};
const DateFormat isoDay{"yyyy-MM-dd", "en_US_POSIX", std::nullopt};

/// As people write dates with these fields; absent where that is not known.
std::optional<DateFormat> ownFormat(const char* fields) {
    if (customs().dates == isoMinute.locale) return std::nullopt;
    auto problem = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns{
        icu::DateTimePatternGenerator::createInstance(icu::Locale(customs().dates.c_str()), problem)};
    if (U_FAILURE(problem)) return std::nullopt;
    auto pattern = patterns->getBestPattern(fields, problem);
    if (U_FAILURE(problem)) return std::nullopt;
    return DateFormat{withoutMarks(pattern.findAndReplace(u"\u202f", u" ")), customs().dates, std::nullopt};
}

std::optional<DateFormat> ownMinute() { return ownFormat("yMMddjjmm"); }
std::optional<DateFormat> ownDay() { return ownFormat("yMMdd"); }

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

std::string withoutMarks(const icu::UnicodeString& text) {
    icu::UnicodeString plain;
    for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        if ((U_GET_GC_MASK(text.char32At(i)) & U_GC_CF_MASK) == 0) plain += text.char32At(i);
    }
    std::string result;
    return plain.toUTF8String(result);
}

std::string localTime(Date date) {
    return Platform::current().dateFormatter->format(ownMinute().value_or(isoMinute), date);
}

std::string localDay(Date date) { return Platform::current().dateFormatter->format(ownDay().value_or(isoDay), date); }

std::string timeOfDay(Date date) {
    const DateFormat plain{"HH:mm", isoMinute.locale, std::nullopt};
    return Platform::current().dateFormatter->format(ownFormat("jjmm").value_or(plain), date);
}

std::string capitalized(std::string_view text) {
    auto wide = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    wide.replace(0, wide.moveIndex32(0, 1), icu::UnicodeString(wide, 0, wide.moveIndex32(0, 1)).toUpper());
    std::string result;
    return wide.toUTF8String(result);
}

std::optional<Date> dateFromLocalTime(const std::string& text) {
    const auto& formatter = *Platform::current().dateFormatter;
    // Where clocks go forward at midnight, the day begins at one o'clock.
    for (const auto& [format, whole] : {std::pair{std::optional{isoMinute}, text},
                                        {std::optional{isoDay}, text},
                                        {std::optional{isoMinute}, text + " 01:00"},
                                        {ownMinute(), text},
                                        {ownDay(), text}}) {
        const auto date = format ? formatter.parse(*format, whole) : std::nullopt;
        if (date && formatter.format(*format, *date) == whole) return date;
    }
    return std::nullopt;
}

}  // namespace kavio::wallet
