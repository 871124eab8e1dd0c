#include "platform/linux/icu.h"

#include <kavio/platform/run_loop.h>

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace kavio::test {
namespace {

TEST(LinuxDevice, SpeaksTheUsersLanguage) {
    const auto former = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    for (const auto& [locale, language, germany] :
         std::vector<std::tuple<icu::Locale, std::optional<std::string>, const char*>>{
             {{"de", "AT"}, "de", "Deutschland"},
             {icu::Locale::getRoot(), std::nullopt, "DE"},
         }) {
        icu::Locale::setDefault(locale, status);
        EXPECT_EQ(makeIcuLocale()->languageCode(), language);
        EXPECT_EQ(makeIcuLocale()->regionName("DE"), germany);
    }
    icu::Locale::setDefault({"th", "TH"}, status);  // whose calendar is not the Gregorian
    EXPECT_EQ(makeIcuDateFormatter()->parse({"yyyy", std::nullopt, "UTC"}, "1970"), Date());
    icu::Locale::setDefault(former, status);
}

TEST(LinuxDevice, FindsAnyExpressionAndGivesUpOneThatTakesTooLong) {
    using Matches = std::vector<RegularExpression::Match>;
    for (const auto& [pattern, text, matches] : std::vector<std::tuple<std::string, std::string, Matches>>{
             {"(x)|(y)", "zy", {{"y", "", "y"}}},
             {"(a+)+$", std::string(200, 'a') + "b", {}},
             {"(?:.|\\n)*z", std::string(3'000'000, 'a'), {}},
         }) {
        EXPECT_EQ(std::get<Matches>(makeIcuRegularExpression()->matches(pattern, text)), matches) << pattern;
    }
}

TEST(RunLoop, StopsWhenItIsToldAndGoesOnLater) {
    RunLoop loop;
    int ran = 0;
    loop.post([&] { ++ran, loop.stop(); });
    loop.post([&] { ++ran; });
    loop.run();
    EXPECT_EQ(ran, 1);
    loop.post([&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(ran, 2);
}

TEST(RunLoop, IsFreeToGoInsideItsOwnWork) {
    auto loop = std::make_unique<RunLoop>();
    bool isDropped = false;
    // What the dropped block holds posts once more as it goes.
    std::shared_ptr<void> postsAtItsEnd(nullptr, [&, raw = loop.get()](void*) { raw->post([] {}), isDropped = true; });
    loop->post([&] { loop.reset(); });
    loop->post([held = std::move(postsAtItsEnd)] {});
    loop->run();
    EXPECT_TRUE(isDropped);
}

}  // namespace
}  // namespace kavio::test
