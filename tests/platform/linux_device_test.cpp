#include "platform/linux/icu.h"

#include <kavio/platform/run_loop.h>

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;

TEST(LinuxDevice, SpeaksTheUsersLanguage) {
    const auto former = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    for (const auto& [locale, language, germany] :
         std::vector<std::tuple<icu::Locale, std::optional<std::string>, const char*>>{
             {{"de", "AT"}, "de", "Deutschland"},
             {{"en", "US", "POSIX"}, "en", "Germany"},
             {icu::Locale::getRoot(), std::nullopt, "DE"},
         }) {
        icu::Locale::setDefault(locale, status);
        EXPECT_EQ(makeIcuLocale()->languageCode(), language);
        EXPECT_EQ(makeIcuLocale()->regionName("DE"), germany);
    }
    icu::Locale::setDefault(former, status);
}

TEST(LinuxDevice, TakesTheLanguageFromTheEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a program of its own, because ICU looks once
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) ::unsetenv(name);
    for (const auto& [name, value, language] : std::vector<std::tuple<const char*, const char*, std::string>>{
             {"LC_TIME", "he_IL", "en"}, {"LANG", "C.UTF-8", "en"}, {"LC_MESSAGES", "he_IL.UTF-8", "he"}}) {
        ::setenv(name, value, 1);
        EXPECT_EXIT(std::exit(makeIcuLocale()->languageCode() == language ? 0 : 1), testing::ExitedWithCode(0), "");
    }
    for (const char* name : {"LC_MESSAGES", "LC_TIME", "LANG"}) ::unsetenv(name);
}

TEST(RunLoop, StopsWhenItIsToldAndGoesOnLater) {
    RunLoop loop;
    int ran = 0;
    loop.post([&] { ++ran, loop.stop(); });
    loop.post([&] { ++ran; });
    loop.run();
    EXPECT_EQ(ran, 1);
    std::thread([&] { loop.post([&] { ++ran, loop.stop(); }); }).join();
    loop.run();
    EXPECT_EQ(ran, 3);
    loop.stop();
    loop.run();
    EXPECT_EQ(ran, 3);
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
