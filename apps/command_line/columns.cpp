#include "columns.h"

#include "numbers.h"

#include <sys/ioctl.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace kavio::command_line {

namespace {

bool isWide(UChar32 codePoint) {
    const auto width = u_getIntPropertyValue(codePoint, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH;
}

/// Such as an accent, or a vowel of Hangul that the syllable's first letter makes room for.
bool isDrawnOverOthers(UChar32 codePoint) {
    const auto syllable = u_getIntPropertyValue(codePoint, UCHAR_HANGUL_SYLLABLE_TYPE);
    return (U_GET_GC_MASK(codePoint) & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0 ||
           syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO;
}

std::size_t columnsOf(UChar32 codePoint) {
    if (isDrawnOverOthers(codePoint)) return 0;
    return isWide(codePoint) ? 2 : 1;
}

std::size_t columnsOf(const icu::UnicodeString& text) {
    std::size_t columns = 0;
    for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) columns += columnsOf(text.char32At(i));
    return columns;
}

icu::UnicodeString fromUtf8(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

std::string toUtf8(const icu::UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

/// Whether a line may be broken before the position: at blanks, or where words are written without them; not in names
/// such as "kavio-wallet".
bool isBetweenWords(const icu::UnicodeString& text, std::int32_t position) {
    const auto before = text.char32At(position - 1);
    return before == ' ' || isWide(before) || isWide(text.char32At(position));
}

/// Without the blanks at the end.
icu::UnicodeString trimmed(icu::UnicodeString text) {
    while (text.endsWith(' ')) text.truncate(text.length() - 1);
    return text;
}

std::string wrappedLine(const icu::UnicodeString& line, std::size_t columns, std::size_t indent) {
    auto problem = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks{icu::BreakIterator::createLineInstance({}, problem)};
    if (U_FAILURE(problem)) return toUtf8(line);
    breaks->setText(line);
    icu::UnicodeString result;
    std::int32_t lineBegin = 0;  // in `result`
    std::int32_t wordBegin = 0;  // in `line`
    for (auto end = breaks->next(); end != icu::BreakIterator::DONE; end = breaks->next()) {
        if (end < line.length() && !isBetweenWords(line, end)) continue;
        const auto word = line.tempSubStringBetween(wordBegin, end);
        if (wordBegin > 0 && columnsOf(trimmed(icu::UnicodeString(result, lineBegin) + word)) > columns) {
            result = trimmed(result) + '\n';
            lineBegin = result.length();
            for (std::size_t i = 0; i < indent; ++i) result += ' ';
        }
        result += word;
        wordBegin = end;
    }
    return toUtf8(result);
}

}  // namespace

std::optional<std::size_t> outputWidth() {
    winsize size{};
    if (isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const auto* const columns = std::getenv("COLUMNS");
    const auto number = numberFrom<std::size_t>(columns != nullptr ? columns : "").value_or(0);
    return number > 0 ? std::optional{number} : std::nullopt;
}

std::size_t columnsOf(std::string_view text) { return columnsOf(fromUtf8(text)); }

std::string cutTo(std::size_t columns, std::string_view text) {
    if (columnsOf(text) <= columns) return std::string{text};
    if (columns == 0) return {};
    const auto whole = fromUtf8(text);
    std::size_t used = 1;  // the "…"
    std::int32_t end = 0;
    for (; end < whole.length(); end = whole.moveIndex32(end, 1)) {
        used += columnsOf(whole.char32At(end));
        if (used > columns) break;
    }
    return toUtf8(whole.tempSubStringBetween(0, end)) + "…";
}

std::string wrapped(std::string_view text, std::optional<std::size_t> columns, std::size_t indent) {
    if (!columns) return std::string{text};
    std::string result;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = std::min(text.find('\n', begin), text.size());
        result += wrappedLine(fromUtf8(text.substr(begin, end - begin)), *columns, indent);
        if (end < text.size()) result += '\n';
        begin = end + 1;
    }
    return result;
}

}  // namespace kavio::command_line
