#pragma once

// What a device's small parts promise: bundles, locale, dates, expressions, characters, digest, base 64, UUIDs, clock.
//   INSTANTIATE_TEST_SUITE_P(Mine, DeviceConformance, testing::Values(port));

#include <kavio/testing/conformance/port.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <variant>
#include <vector>

namespace kavio::test {

/// What the small parts of a device promise: bundles, locale, dates, texts, digests, clock.
class DeviceConformance : public PortConformance {
protected:
    const DateFormat wholeDate{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
    const DateFormat withZone{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", std::nullopt, std::nullopt};
    const DateFormat wholeSeconds{"yyyy-MM-dd'T'HH:mm:ss", "en_US_POSIX", "UTC"};
    const DateFormat stamp{"yyyyMMddHHmmss", "en_US_POSIX", "UTC"};
    const DateFormat debugDate{"yyyy-MM-dd HH:mm:ss xx", "en_US_POSIX", "UTC"};
};

TEST_P(DeviceConformance, BundleGivesItsValuesAndTranslations) {
    KAVIO_NEEDS(platform->mainBundle);
    const auto& bundle = *platform->mainBundle;
    for (const auto& [key, value] : port().information) {
        EXPECT_EQ(bundle.informationValue(key), value) << "The value of \"" << key << "\" is not the application's.";
        EXPECT_EQ(bundle.informationText(key).has_value(), std::holds_alternative<std::string>(value))
            << "Only what is a text may be read as one: \"" << key << "\".";
    }
    for (const auto& [key, text] : port().translations)
        EXPECT_EQ(bundle.localizedString(key), text) << "A text that the application translates is not translated.";
    EXPECT_EQ(bundle.informationValue("no such key"), std::nullopt) << "A key without a value has one.";
    EXPECT_EQ(bundle.localizedString("not translated"), "not translated")
        << "A text without a translation must stay as it is.";
}

TEST_P(DeviceConformance, LibraryBundleNamesTheVersion) {
    KAVIO_NEEDS(platform->libraryBundle);
    for (const char* key : {"CFBundleShortVersionString", "CFBundleVersion", "DTPlatformName", "DTPlatformVersion"})
        EXPECT_TRUE(platform->libraryBundle->informationText(key)) << "The library's bundle has no text for " << key;
}

TEST_P(DeviceConformance, LocaleNamesRegionsAndNothingElse) {
    KAVIO_NEEDS(platform->locale);
    EXPECT_THAT(platform->locale->languageCode().value_or("en"), testing::MatchesRegex("[a-z]{2,3}"))
        << "The language is not an ISO 639 code.";
    EXPECT_NE(platform->locale->regionName("DE").value_or("DE"), "DE")
        << "A region must be named in the user's language.";
    for (const char* code : {"", "ZZ", "419", "DEU", "D_"})
        EXPECT_EQ(platform->locale->regionName(code), std::nullopt) << "\"" << code << "\" is not a region.";
}

TEST_P(DeviceConformance, DateFormatterParsesStrictlyAndWhole) {
    KAVIO_NEEDS(platform->dateFormatter);
    for (const auto& [format, text, seconds] : std::vector<std::tuple<DateFormat, std::string, std::optional<double>>>{
             {wholeDate, "2020-02-29T10:00:00.125", 1582970400.125},
             {withZone, "2020-02-29T12:00:00.000+0200", 1582970400},
             {wholeSeconds, "2020-02-29T10:00:00", 1582970400},
             {wholeDate, "2021-02-29T10:00:00.000", std::nullopt},
             {wholeDate, "2020-02-29T10:00:00.125Z", std::nullopt},
             {wholeDate, "", std::nullopt},
             {wholeDate, "2020-02-29T10:00:00.\xFF", std::nullopt},
             {wholeDate, std::string(5'000'000, '1'), std::nullopt},
             {wholeDate, "2020-02-29T10:00:00.5", 1582970400.5},
             {wholeDate, "2020-02-29T10:00:00.987654321", 1582970400.987},
         }) {
        const auto date = platform->dateFormatter->parse(format, text);
        EXPECT_EQ(date ? std::optional(date->time_since_epoch().count()) : std::nullopt, seconds)
            << "Parsing must be strict and use the whole text, here \"" << text.substr(0, 30) << "\".";
    }
}

TEST_P(DeviceConformance, DateFormatterRefusesMoreThanNineDigitsOfAFraction) {
    KAVIO_NEEDS(platform->dateFormatter);
    for (const std::string nine : {"9", "٩"}) {
        std::string text = "2020-02-29T10:00:00.";
        for (int digits = 1; digits < 70; ++digits) {
            text += nine;
            if (digits < 10) continue;
            EXPECT_EQ(platform->dateFormatter->parse(wholeDate, text), std::nullopt) << text << " must not parse.";
            EXPECT_EQ(platform->dateFormatter->parse(withZone, text + "+0000"), std::nullopt)
                << text << "+0000 must not parse.";
        }
    }
}

TEST_P(DeviceConformance, DateFormatterFormatsWhatTheCalendarCanRepresent) {
    KAVIO_NEEDS(platform->dateFormatter);
    for (const auto& [format, seconds, text] : std::vector<std::tuple<DateFormat, double, const char*>>{
             {wholeDate, 1582970400.125, "2020-02-29T10:00:00.125"},
             {stamp, 1582970400.999, "20200229100000"},
             {debugDate, 253402300800, "10000-01-01 00:00:00 +0000"},
             {stamp, 1e300, ""},
             {stamp, std::numeric_limits<double>::quiet_NaN(), ""},
         }) {
        EXPECT_EQ(platform->dateFormatter->format(format, Date(std::chrono::duration<double>(seconds))), text)
            << "The date " << seconds << " must read so in the pattern " << format.pattern
            << "; one that the calendar cannot represent is an empty text.";
    }
}

TEST_P(DeviceConformance, RegularExpressionFindsAllMatches) {
    KAVIO_NEEDS(platform->regularExpression);
    using Matches = std::vector<RegularExpression::Match>;
    for (const auto& [pattern, text, matches] : std::vector<std::tuple<std::string, std::string, Matches>>{
             {"NDS=(\\d+)", "NDS=x&nds=1", {}},
             {"NDS=(\\d+)", "NDS=\u0663&NDS=12", {{"NDS=\u0663", "\u0663"}, {"NDS=12", "12"}}},
             {"MMID=(\\d+)", "?MMID=0012", {{"MMID=0012", "0012"}}},
             {"Serial Num: (\\d+)", "Serial Num: 7.", {{"Serial Num: 7", "7"}}},
             {"Kavio ID: (\\d+)", std::string(1'000'000, '1') + "\nKavio ID: 1", {{"Kavio ID: 1", "1"}}},
         }) {
        const auto found = platform->regularExpression->matches(pattern, text);
        ASSERT_TRUE(std::holds_alternative<Matches>(found)) << "The library needs the pattern " << pattern;
        EXPECT_EQ(std::get<Matches>(found), matches)
            << "All matches of " << pattern << " must be found, with their groups, in order.";
    }
}

TEST_P(DeviceConformance, RegularExpressionSaysWhatIsInvalid) {
    KAVIO_NEEDS(platform->regularExpression);
    const auto found = platform->regularExpression->matches("(", "(");
    ASSERT_TRUE(std::holds_alternative<RegularExpression::Invalid>(found)) << "\"(\" is not a pattern.";
    EXPECT_FALSE(std::get<RegularExpression::Invalid>(found).description.empty())
        << "An invalid pattern must be described.";
}

TEST_P(DeviceConformance, CharactersAreNeverCut) {
    KAVIO_NEEDS(platform->characters);
    const std::string accent = "e\u0301";                                     // two code points
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // five
    const std::string flags = "\U0001F1E9\U0001F1EA\U0001F1EE\U0001F1F1";     // two characters
    for (const auto& [text, count, prefix] : std::vector<std::tuple<std::string, std::size_t, std::string>>{
             {"abc", 0, ""},
             {"abc", std::numeric_limits<std::size_t>::max(), "abc"},
             {"a\r\nb", 2, "a\r\n"},
             {"a" + accent + "b", 2, "a" + accent},
             {family + "x", 1, family},
             {flags, 1, flags.substr(0, 8)},
         }) {
        EXPECT_EQ(platform->characters->prefix(text, count), prefix)
            << "The first " << count << " characters of \"" << text << "\", as a person counts them, are others.";
    }
}

TEST_P(DeviceConformance, CharactersReplaceWhatIsNotText) {
    KAVIO_NEEDS(platform->characters);
    EXPECT_EQ(platform->characters->wellFormed({"\0\xFF.\xE2\x82", 5}), std::string("\0\uFFFD.\uFFFD", 8))
        << "Each ill-formed sequence must be replaced by U+FFFD, and all else stay.";
}

TEST_P(DeviceConformance, DigestIsSha1) {
    KAVIO_NEEDS(platform->digest);
    const auto hexadecimal = [&](std::string_view bytes) {
        std::string text;
        for (const auto byte : platform->digest->sha1(bytes))
            for (const int digit : {byte >> 4, byte & 15}) text += "0123456789abcdef"[digit];
        return text;
    };
    EXPECT_EQ(hexadecimal("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d") << "This is not the SHA-1 of \"abc\".";
    EXPECT_EQ(hexadecimal(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709") << "This is not the SHA-1 of nothing.";
}

TEST_P(DeviceConformance, Base64IsStandardWithPaddingAndInOneLine) {
    KAVIO_NEEDS(platform->base64);
    for (const auto& [bytes, text] : std::vector<std::pair<std::string, std::string>>{
             {"", ""},
             {"a", "YQ=="},
             {std::string("\xFB\xFF\0", 3), "+/8A"},
             {std::string(99, '\0'), std::string(132, 'A')},
         }) {
        EXPECT_EQ(platform->base64->encode(bytes), text)
            << "Base 64 has the standard alphabet, padding and no line breaks.";
    }
}

TEST_P(DeviceConformance, UuidIsRandomAndInUpperCase) {
    KAVIO_NEEDS(platform->uuid);
    std::set<std::string> made;
    for (int i = 0; i < 1000; ++i) made.insert(platform->uuid->make());
    EXPECT_EQ(made.size(), 1000U) << "A UUID was made twice.";
    const auto* form = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    EXPECT_THAT(made, testing::Each(testing::MatchesRegex(form))) << "This is not a random UUID in upper case.";
}

TEST_P(DeviceConformance, ClockTellsTheDateAndNeverGoesBackwards) {
    KAVIO_NEEDS(platform->clock);
    EXPECT_GT(platform->clock->now(), Date(std::chrono::sys_days(std::chrono::January / 1 / 2020)))
        << "The wall clock does not tell today's date.";
    EXPECT_GE(platform->clock->uptime().count(), 0) << "The time since the device started is negative.";
    const auto readMany = [clock = platform->clock] {
        std::vector<std::chrono::nanoseconds> read(10'000);
        std::ranges::generate(read, [&] { return clock->uptime(); });
        return std::ranges::is_sorted(read);
    };
    bool otherIsSorted = false;
    std::thread other([&] { otherIsSorted = readMany(); });
    EXPECT_TRUE(readMany()) << "The monotonic clock went backwards.";
    other.join();
    EXPECT_TRUE(otherIsSorted) << "The monotonic clock went backwards on another thread.";
}

}  // namespace kavio::test
