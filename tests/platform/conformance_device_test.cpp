#include "platform/conformance.h"

#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace kavio::test {
namespace {

class Device : public Conformance {};
INSTANTIATE_TEST_SUITE_P(, Device, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

const DateFormat milliseconds{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
const DateFormat withZone{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", std::nullopt, std::nullopt};
const DateFormat stamp{"yyyyMMddHHmmss", "en_US_POSIX", "UTC"};
const DateFormat thai{"yyyy-MM-dd'T'HH:mm:ss.SSS", "th_TH", "UTC"};  // a calendar of its own is not asked for

TEST_P(Device, ParsesDatesStrictlyAndWhole) {
    for (const auto& [format, text, seconds] : std::vector<std::tuple<DateFormat, std::string, std::optional<double>>>{
             {milliseconds, "2020-02-29T10:00:00.125", 1582970400.125},
             {thai, "2020-02-29T10:00:00.125", 1582970400.125},
             {withZone, "2020-02-29T12:00:00.000+0200", 1582970400},
             {milliseconds, "2021-02-29T10:00:00.000", std::nullopt},
             {milliseconds, "2020-02-29T10:00:00.125Z", std::nullopt},
             {milliseconds, "", std::nullopt},
             {milliseconds, "2020-02-29T10:00:00.\xFF", std::nullopt},
             {milliseconds, std::string(5'000'000, '1'), std::nullopt},
         }) {
        const auto date = platform.dateFormatter->parse(format, text);
        EXPECT_EQ(date ? std::optional(date->time_since_epoch().count()) : std::nullopt, seconds) << text.substr(0, 30);
    }
}

TEST_P(Device, FormatsDates) {
    for (const auto& [format, seconds, text] : std::vector<std::tuple<DateFormat, double, const char*>>{
             {milliseconds, 1582970400.125, "2020-02-29T10:00:00.125"},
             {stamp, 1582970400.999, "20200229100000"},
             {stamp, 1e300, ""},
             {stamp, std::numeric_limits<double>::quiet_NaN(), ""},
         }) {
        EXPECT_EQ(platform.dateFormatter->format(format, Date(std::chrono::duration<double>(seconds))), text);
    }
}

TEST_P(Device, FindsAllMatchesOfAPattern) {
    using Matches = std::vector<RegularExpression::Match>;
    for (const auto& [pattern, text, matches] : std::vector<std::tuple<std::string, std::string, Matches>>{
             {"(x)|(y)", "zy", {{"y", "", "y"}}},
             {"\\d+", "\u0663 12", {{"\u0663"}, {"12"}}},
             {"(a+)+$", std::string(200, 'a') + "b", {}},
             {"(?:.|\\n)*z", std::string(3'000'000, 'a'), {}},
         }) {
        const auto found = platform.regularExpression->matches(pattern, text);
        ASSERT_TRUE(std::holds_alternative<Matches>(found)) << pattern;
        EXPECT_EQ(std::get<Matches>(found), matches) << pattern;
    }
    const auto invalid = platform.regularExpression->matches("(", "(");
    ASSERT_TRUE(std::holds_alternative<RegularExpression::Invalid>(invalid));
    EXPECT_FALSE(std::get<RegularExpression::Invalid>(invalid).description.empty());
}

TEST_P(Device, CutsTextBetweenCharactersAndReplacesWhatIsNoText) {
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
        EXPECT_EQ(platform.characters->prefix(text, count), prefix) << text;
    }
    EXPECT_EQ(platform.characters->wellFormed({"\0\xFF.\xE2\x82", 5}), std::string("\0\uFFFD.\uFFFD", 8));
}

TEST_P(Device, DigestsEncodesAndMakesUuids) {
    const auto digest = platform.digest->sha1("abc");
    EXPECT_EQ(platform.base64->encode(std::string(digest.begin(), digest.end())), "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
    EXPECT_EQ(platform.base64->encode(std::string(99, 'a')).size(), 132U);

    std::set<std::string> made;
    for (int i = 0; i < 1000; ++i) made.insert(platform.uuid->make());
    EXPECT_EQ(made.size(), 1000U);
    const auto* form = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    EXPECT_THAT(made, testing::Each(testing::MatchesRegex(form)));
}

TEST_P(Device, ReadsItsBundlesAndNamesRegions) {
    EXPECT_EQ(platform.mainBundle->informationText("text"), "t");
    EXPECT_EQ(platform.mainBundle->informationText("number"), std::nullopt);
    EXPECT_EQ(platform.mainBundle->informationValue("number"), Bundle::Value(std::int64_t{7}));
    EXPECT_EQ(platform.mainBundle->localizedString("hello"), "hallo");
    EXPECT_EQ(platform.mainBundle->localizedString("not translated"), "not translated");
    for (const char* key : {"CFBundleShortVersionString", "CFBundleVersion"})
        EXPECT_TRUE(platform.libraryBundle->informationText(key));
    EXPECT_NE(platform.locale->regionName("DE").value_or("DE"), "DE");
    for (const char* code : {"", "ZZ", "419", "DEU", "D_"})
        EXPECT_EQ(platform.locale->regionName(code), std::nullopt) << code;
}

}  // namespace
}  // namespace kavio::test
