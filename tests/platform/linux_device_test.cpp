#include "platform/linux/icu.h"

#include <kavio/platform/run_loop.h>

#include <gmock/gmock.h>
#include <unicode/locid.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

TEST(LinuxDevice, SpeaksTheUsersLanguage) {
    const auto former = icu::Locale::getDefault();
    struct Case {
        icu::Locale locale;
        std::optional<std::string> language;
        const char* germany;
    };
    for (const auto& c : std::initializer_list<Case>{
             {icu::Locale("de", "AT"), "de", "Deutschland"},
             {icu::Locale("en", "US", "POSIX"), "en", "Germany"},
             {icu::Locale::getRoot(), std::nullopt, "DE"},
         }) {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(c.locale, status);
        EXPECT_EQ(makeIcuLocale()->languageCode(), c.language);
        EXPECT_EQ(makeIcuLocale()->regionName("DE"), c.germany);
    }
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(former, status);
}

TEST(LinuxDevice, TakesTheLanguageFromTheEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a program of its own, because ICU looks once
    const auto speaks = [](const char* language) { return makeIcuLocale()->languageCode() == language; };
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) ::unsetenv(name);
    EXPECT_EXIT(std::exit(speaks("en") ? 0 : 1), testing::ExitedWithCode(0), "");
    ::setenv("LANG", "C.UTF-8", 1);
    EXPECT_EXIT(std::exit(speaks("en") ? 0 : 1), testing::ExitedWithCode(0), "");
    ::setenv("LC_MESSAGES", "he_IL.UTF-8", 1);
    EXPECT_EXIT(std::exit(speaks("he") ? 0 : 1), testing::ExitedWithCode(0), "");
    for (const char* name : {"LC_MESSAGES", "LANG"}) ::unsetenv(name);
}

TEST(RunLoop, StopsWhenItIsToldAndGoesOnLater) {
    RunLoop loop;
    std::vector<std::string> ran;
    loop.post([&] { ran.emplace_back("first"), loop.stop(); });
    loop.post([&] { ran.emplace_back("second"); });
    loop.run();
    EXPECT_THAT(ran, ElementsAre("first"));

    std::thread other([&] { loop.post([&] { ran.emplace_back("third"), loop.stop(); }); });
    loop.run();
    other.join();
    EXPECT_THAT(ran, ElementsAre("first", "second", "third"));

    loop.stop();
    loop.run();
    EXPECT_EQ(ran.size(), 3U);
}

TEST(RunLoop, RunsUntilAConditionHoldsOrTimeIsUp) {
    RunLoop loop;
    int ran = 0;
    for (int i = 0; i < 5; ++i) loop.post([&] { ++ran; });
    EXPECT_TRUE(loop.runUntil([&] { return ran == 3; }, milliseconds::max()));
    EXPECT_EQ(ran, 3);
    EXPECT_FALSE(loop.runUntil([] { return false; }, milliseconds(1)));
    EXPECT_EQ(ran, 5);
    loop.postAfter(milliseconds::max(), [&] { ++ran; });
    EXPECT_FALSE(loop.runUntil([&] { return ran == 6; }, milliseconds(0)));
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
