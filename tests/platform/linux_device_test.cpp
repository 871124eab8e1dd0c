#include "platform/linux/icu.h"

#include <kavio/platform/linux.h>
#include <kavio/testing/temporary_folder.h>

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <cstdlib>
#include <filesystem>
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
    for (const auto& [locale, language, languages, germany] :
         std::vector<std::tuple<icu::Locale, std::optional<std::string>, std::vector<std::string>, const char*>>{
             {{"de", "AT"}, "de", {"de-AT"}, "Deutschland"},
             {{"pt", "BR"}, "pt", {"pt-BR"}, "Alemanha"},
             {icu::Locale::createCanonical("sr_RS@latin"), "sr", {"sr-Latn-RS"}, "Немачка"},
             {icu::Locale::getRoot(), std::nullopt, {}, "DE"},
         }) {
        icu::Locale::setDefault(locale, status);
        EXPECT_EQ(makeIcuLocale()->languageCode(), language);
        EXPECT_EQ(makeIcuLocale()->languages(), languages);
        EXPECT_EQ(makeIcuLocale()->regionName("DE"), germany);
    }
    icu::Locale::setDefault({"th", "TH"}, status);  // where the calendar is not the Gregorian one
    EXPECT_EQ(makeIcuDateFormatter()->parse({"yyyy", std::nullopt, "UTC"}, "1970"), Date());
    icu::Locale::setDefault(former, status);
}

TEST(LinuxDevice, FindsAnyExpressionAndGivesUpOneThatTakesTooLong) {
    using Matches = std::vector<RegularExpression::Match>;
    for (const auto& [pattern, text, matches] : std::vector<std::tuple<std::string, std::string, Matches>>{
             {"(x)|(y)", "zy", {{"y", "", "y"}}},
             {"(a+)+$", std::string(200, 'a').append("b"), {}},
             {"(?:.|\\n)*z", std::string(3'000'000, 'a'), {}},
         }) {
        EXPECT_EQ(std::get<Matches>(makeIcuRegularExpression()->matches(pattern, text)), matches) << pattern;
    }
}

TEST(LinuxDevice, GivesEachApplicationAStoreFolderOfItsOwn) {
    const TemporaryFolder data;
    ::setenv("XDG_DATA_HOME", data.path().c_str(), 1);
    for (const auto& [identifier, folder] : std::vector<std::pair<std::optional<std::string>, std::string>>{
             {"com.example.wallet", "com.example.wallet"},
             {"../other", "%2E.%2Fother"},
             {"", "platform_tests"},
             {std::nullopt, "platform_tests"},
         }) {
        LinuxPlatformOptions options;
        if (identifier) options.information.emplace("CFBundleIdentifier", *identifier);
        EXPECT_TRUE(makeLinuxPlatform(std::move(options)).keyValueStores->suite("s"));
        std::vector<std::string> made;
        for (const auto& file : std::filesystem::recursive_directory_iterator(data.path())) {
            if (file.is_regular_file()) made.push_back(file.path().string().substr(data.path().string().size()));
        }
        EXPECT_EQ(made, std::vector{"/kavio/" + folder + "/s.suite.sqlite"});
        std::filesystem::remove_all(data.path() / "kavio");
    }
    ::unsetenv("XDG_DATA_HOME");
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
    // What the dropped block holds posts once more as it is destroyed.
    std::shared_ptr<void> postsAtItsEnd(nullptr, [&, raw = loop.get()](void*) { raw->post([] {}), isDropped = true; });
    loop->post([&] { loop.reset(); });
    loop->post([held = std::move(postsAtItsEnd)] {});
    loop->run();
    EXPECT_TRUE(isDropped);
}

}  // namespace
}  // namespace kavio::test
