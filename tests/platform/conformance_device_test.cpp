#include "platform/conformance.h"

#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace kavio::test {
namespace {

using testing::ElementsAre;

class Device : public Conformance {};
INSTANTIATE_TEST_SUITE_P(, Device, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

const DateFormat milliseconds{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
const DateFormat withZone{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", std::nullopt, std::nullopt};
const DateFormat stamp{"yyyyMMddHHmmss", "en_US_POSIX", "UTC"};
const DateFormat thai{"yyyy-MM-dd'T'HH:mm:ss.SSS", "th_TH", "UTC"};
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST_P(Device, ParsesDatesStrictlyAndWhole) {
    struct Case {
        const char* name;
        const DateFormat& format;
        std::string text;
        std::optional<double> seconds;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"as written", milliseconds, "2020-02-29T10:00:00.125", 1582970400.125},
             {"before 1970", milliseconds, "1969-12-31T23:59:59.500", -0.5},
             {"a calendar of its own is not asked for", thai, "2020-02-29T10:00:00.125", 1582970400.125},
             {"offset in the text", withZone, "2020-02-29T12:00:00.000+0200", 1582970400},
             {"no leap year", milliseconds, "2021-02-29T10:00:00.000", std::nullopt},
             {"hour out of range", milliseconds, "2020-02-28T24:00:00.000", std::nullopt},
             {"text left over", milliseconds, "2020-02-29T10:00:00.125Z", std::nullopt},
             {"cut off", milliseconds, "2020-02-29T10:00", std::nullopt},
             {"no offset", withZone, "2020-02-29T12:00:00.000", std::nullopt},
             {"empty", milliseconds, "", std::nullopt},
             {"ill-formed UTF-8", milliseconds, "2020-02-29T10:00:00.\xFF", std::nullopt},
             {"hostile", milliseconds, std::string(5'000'000, '1'), std::nullopt},
         }) {
        SCOPED_TRACE(c.name);
        const auto date = platform.dateFormatter->parse(c.format, c.text);
        EXPECT_EQ(date ? std::optional(date->time_since_epoch().count()) : std::nullopt, c.seconds);
    }
}

TEST_P(Device, FormatsDates) {
    struct Case {
        const DateFormat& format;
        double seconds;
        const char* text;
    };
    for (const auto& c : std::initializer_list<Case>{
             {milliseconds, 1582970400.125, "2020-02-29T10:00:00.125"},
             {stamp, 1582970400.999, "20200229100000"},
             {thai, 0, "1970-01-01T00:00:00.000"},
             {stamp, 1e300, ""},
             {stamp, -1e300, ""},
             {stamp, infinity, ""},
             {stamp, std::numeric_limits<double>::quiet_NaN(), ""},
         }) {
        EXPECT_EQ(platform.dateFormatter->format(c.format, Date(std::chrono::duration<double>(c.seconds))), c.text);
    }
}

TEST_P(Device, FindsAllMatchesOfAPattern) {
    using Matches = std::vector<RegularExpression::Match>;
    struct Case {
        const char* pattern;
        std::string text;
        Matches matches;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"a(b)", "abab", {{"ab", "b"}, {"ab", "b"}}},
             {"(x)|(y)", "zy", {{"y", "", "y"}}},
             {"\\d+", "\u0663 12", {{"\u0663"}, {"12"}}},
             {"no", "abc", {}},
             {"(a+)+$", std::string(200, 'a') + "b", {}},
             {"(?:.|\\n)*z", std::string(3'000'000, 'a'), {}},
         }) {
        SCOPED_TRACE(c.pattern);
        const auto found = platform.regularExpression->matches(c.pattern, c.text);
        ASSERT_TRUE(std::holds_alternative<Matches>(found));
        EXPECT_EQ(std::get<Matches>(found), c.matches);
    }
    const auto invalid = platform.regularExpression->matches("(", "(");
    ASSERT_TRUE(std::holds_alternative<RegularExpression::Invalid>(invalid));
    EXPECT_FALSE(std::get<RegularExpression::Invalid>(invalid).description.empty());
}

TEST_P(Device, CutsTextBetweenCharacters) {
    const std::string accent = "e\u0301";                                     // two code points
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // five
    const std::string flags = "\U0001F1E9\U0001F1EA\U0001F1EE\U0001F1F1";     // two characters
    struct Case {
        std::string text;
        std::size_t count;
        std::string prefix;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"", 3, ""},
             {"abc", 0, ""},
             {"abc", 2, "ab"},
             {"abc", 9, "abc"},
             {"a\r\nb", 2, "a\r\n"},
             {"\r\n", 1, "\r\n"},
             {"a" + accent + "b", 2, "a" + accent},
             {"x" + accent, 1, "x"},
             {accent + "x", 1, accent},
             {family + "x", 1, family},
             {flags, 1, flags.substr(0, 8)},
             {"\u00E9\u00E8", std::numeric_limits<std::size_t>::max(), "\u00E9\u00E8"},
         }) {
        EXPECT_EQ(platform.characters->prefix(c.text, c.count), c.prefix) << c.text;
    }
}

TEST_P(Device, ReplacesWhatIsNoText) {
    EXPECT_EQ(platform.characters->wellFormed("a\u00E9\U0001F468"), "a\u00E9\U0001F468");
    EXPECT_EQ(platform.characters->wellFormed(std::string_view("\0\xFF.\xE2\x82", 5)),
              std::string("\0\uFFFD.\uFFFD", 8));
}

TEST_P(Device, DigestsAndEncodes) {
    const auto digest = platform.digest->sha1("abc");
    EXPECT_EQ(platform.base64->encode(std::string(digest.begin(), digest.end())), "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
    EXPECT_EQ(platform.base64->encode(""), "");
    EXPECT_EQ(platform.base64->encode(std::string_view("\0\xFF", 2)), "AP8=");
    EXPECT_EQ(platform.base64->encode(std::string(99, 'a')).size(), 132U);
}

TEST_P(Device, MakesFreshUuids) {
    std::set<std::string> made;
    for (int i = 0; i < 1000; ++i) made.insert(platform.uuid->make());
    EXPECT_EQ(made.size(), 1000U);
    EXPECT_THAT(
        made,
        testing::Each(testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
}

TEST_P(Device, ReadsItsBundles) {
    EXPECT_EQ(platform.mainBundle->informationText("text"), "t");
    EXPECT_EQ(platform.mainBundle->informationText("number"), std::nullopt);
    EXPECT_EQ(platform.mainBundle->informationValue("number"), Bundle::Value(std::int64_t{7}));
    EXPECT_EQ(platform.mainBundle->informationValue("missing"), std::nullopt);
    EXPECT_EQ(platform.mainBundle->localizedString("hello"), "hallo");
    EXPECT_EQ(platform.mainBundle->localizedString("not translated"), "not translated");
    EXPECT_TRUE(platform.libraryBundle->informationText("CFBundleShortVersionString"));
    EXPECT_TRUE(platform.libraryBundle->informationText("CFBundleVersion"));
}

TEST_P(Device, NamesRegionsOnly) {
    EXPECT_NE(platform.locale->regionName("DE").value_or("DE"), "DE");
    for (const char* code : {"", "D", "ZZ", "XX", "419", "DEU", "D_", "??"}) {
        EXPECT_EQ(platform.locale->regionName(code), std::nullopt) << code;
    }
}

TEST_P(Device, CountsTimeUpwards) {
    const auto before = platform.clock->uptime();
    EXPECT_GT(before.count(), 0);
    EXPECT_LE(before, platform.clock->uptime());
    EXPECT_GT(platform.clock->now(), Date(std::chrono::sys_days(std::chrono::January / 1 / 2020)));
}

}  // namespace
}  // namespace kavio::test
