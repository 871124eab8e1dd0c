#pragma once

#include <kavio/date.h>
#include <kavio/export.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kavio {

/// Information values and localized strings of a program or library.
class KAVIO_API Bundle {
public:
    /// What a property list can hold in one place.
    using Value = std::variant<std::string, std::int64_t, double, bool>;

    virtual ~Bundle() = default;
    /// The value for `key`, such as "CFBundleVersion"; absent when there is none.
    virtual std::optional<Value> informationValue(std::string_view key) const = 0;
    /// The text for `key` in the user's language, or `key` itself.
    virtual std::string localizedString(std::string_view key) const = 0;

    /// The information value when it is text.
    std::optional<std::string> informationText(std::string_view key) const {
        const auto value = informationValue(key);
        if (!value || !std::holds_alternative<std::string>(*value)) return std::nullopt;
        return std::get<std::string>(*value);
    }
};

/// The user's current locale.
class KAVIO_API Locale {
public:
    virtual ~Locale() = default;
    /// ISO 639 code; absent when the locale has none.
    virtual std::optional<std::string> languageCode() const = 0;
    /// BCP 47 tags of the languages that the user reads, the best first, such as "pt-BR".
    virtual std::vector<std::string> languages() const {
        const auto code = languageCode();
        return code ? std::vector{*code} : std::vector<std::string>();
    }
    /// Name of an ISO 3166 region in the user's language; absent when `code` is not a region.
    virtual std::optional<std::string> regionName(std::string_view code) const = 0;
};

/// A Unicode date pattern, always of the Gregorian calendar; locale and time zone are the device's own when absent.
///
/// The library asks only for these; a formatter may refuse any other:
///
/// | pattern | locale | time zone | for |
/// | --- | --- | --- | --- |
/// | yyyy-MM-dd'T'HH:mm:ss.SSS | en_US_POSIX | UTC | parsing and formatting |
/// | yyyy-MM-dd'T'HH:mm:ss.SSS | the device's | UTC | parsing |
/// | yyyy-MM-dd'T'HH:mm:ss | en_US_POSIX | UTC | parsing |
/// | yyyy-MM-dd'T'HH:mm:ss.SSSZ | the device's | the device's | parsing |
/// | yyyyMMddHHmmss | en_US_POSIX | UTC | formatting |
/// | yyyy-MM-dd HH:mm:ss xx | en_US_POSIX | UTC | formatting |
///
/// The library itself reads and writes dates in the years 1583 to 9999 in these forms; the formatter gets only
/// the others.
struct DateFormat {
    std::string pattern;                  ///< one of the above
    std::optional<std::string> locale;    ///< such as "en_US_POSIX"
    std::optional<std::string> timeZone;  ///< such as "UTC"
};

/// Dates as text. Parsing is strict and must use the whole text. A fraction of a second may have up to nine digits, and
/// is cut off after the millisecond; with more digits the text does not parse. Texts come from the network: whatever
/// they contain, parsing returns, and soon. A pattern that the formatter refuses parses nothing and formats as an empty
/// text. Safe from any thread.
class KAVIO_API DateFormatter {
public:
    virtual ~DateFormatter() = default;
    /// Absent for a text that is not a date in this format.
    virtual std::optional<Date> parse(const DateFormat& format, std::string_view text) const = 0;
    /// Empty for a date that the calendar cannot represent.
    virtual std::string format(const DateFormat& format, Date date) const = 0;
};

/// Unicode regular expressions. Safe from any thread.
///
/// The library asks for four: `MMID=(\d+)`, `NDS=(\d+)`, `Kavio ID: (\d+)` and `Serial Num: (\d+)`, where `\d` is a
/// decimal digit of any script. An engine may report any other pattern as invalid.
class KAVIO_API RegularExpression {
public:
    /// Group 0 is the whole match; a group that took no part is empty.
    using Match = std::vector<std::string>;
    /// The engine refuses the pattern.
    struct Invalid {
        std::string description;  ///< why
    };

    virtual ~RegularExpression() = default;
    /// All non-overlapping matches anywhere in `text`, in order of position. A search that the engine gives up because
    /// it takes too long has no matches.
    virtual std::variant<std::vector<Match>, Invalid> matches(std::string_view pattern,
                                                              std::string_view text) const = 0;
};

/// User-perceived characters.
class KAVIO_API Characters {
public:
    virtual ~Characters() = default;
    /// The first `count` grapheme clusters of well-formed UTF-8 `text`; all of it when it has fewer.
    virtual std::string_view prefix(std::string_view text, std::size_t count) const = 0;
    /// `text` as UTF-8, each ill-formed sequence replaced by U+FFFD.
    virtual std::string wellFormed(std::string_view text) const = 0;
};

/// Hashes of bytes.
class KAVIO_API Digest {
public:
    /// The 20 bytes of a SHA-1 digest.
    using Sha1 = std::array<std::uint8_t, 20>;

    virtual ~Digest() = default;
    /// The SHA-1 digest of `bytes`.
    virtual Sha1 sha1(std::string_view bytes) const = 0;
};

/// Bytes as text.
class KAVIO_API Base64 {
public:
    virtual ~Base64() = default;
    /// Standard alphabet, with padding, without line breaks.
    virtual std::string encode(std::string_view bytes) const = 0;
};

/// Identifiers that nobody else has.
class KAVIO_API Uuid {
public:
    virtual ~Uuid() = default;
    /// A fresh random UUID: 36 characters, upper-case hexadecimal in groups of 8-4-4-4-12.
    virtual std::string make() const = 0;
};

/// The device's two clocks.
class KAVIO_API Clock {
public:
    virtual ~Clock() = default;
    /// Wall clock of the device.
    virtual Date now() const = 0;
    /// Monotonic time since the device started. It goes on while the device sleeps, and nobody can set it: how long a
    /// payment has been under way is counted on it.
    virtual std::chrono::nanoseconds uptime() const = 0;
};

}  // namespace kavio
