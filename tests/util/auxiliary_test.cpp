#include "util/auxiliary.h"

#include "support/fakes/fake_device.h"
#include "util/trace.h"

#include <gtest/gtest.h>

#include <limits>

namespace kavio::test {
namespace {

TEST(Auxiliary, WritesDurations) {
    struct Case {
        std::uint64_t milliseconds;
        const char* text;
    };
    for (const auto& c : std::initializer_list<Case>{
             {0, "0.000s"},
             {999, "0.999s"},
             {59'999, "59.999s"},
             {60'000, "1m 0.000s"},
             {61'005, "1m 1.005s"},
             {3'600'000, "1h 0.000s"},
             {86'399'999, "23h 59m 59.999s"},
             {86'400'000, "1d 0.000s"},
             {90'061'005, "1d 1h 1m 1.005s"},
             {std::numeric_limits<std::uint64_t>::max(), "213503982334d 14h 25m 51.615s"},
         }) {
        EXPECT_EQ(Auxiliary::durationText(c.milliseconds), c.text);
    }
}

TEST(Auxiliary, TellsVersionAndBuildWhereTheLibraryBundleDoes) {
    const FakeDevice device;
    const InstalledPlatform installed(device.platform());
    EXPECT_EQ(Auxiliary::version(), "1.2.3");
    EXPECT_EQ(Auxiliary::build(), "45");
    device.libraryBundle->setInformation("CFBundleShortVersionString", std::int64_t{1});
    device.libraryBundle->setInformation("CFBundleVersion", std::nullopt);
    EXPECT_EQ(Auxiliary::version(), std::nullopt);
    EXPECT_EQ(Auxiliary::build(), std::nullopt);
}

TEST(Trace, WritesOnlyWhatIsMarkedSafeAndOnlyWhereItIsSwitchedOn) {
    const FakeDevice device;
    const InstalledPlatform installed(device.platform());
    testing::internal::CaptureStderr();
    trace("Login",
          []() -> std::string { throw std::logic_error("a message that may hold secrets is not even formed"); });
    trace("Login", [] { return SafeMessage{"sent"}; });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), isTraceWritten() ? "1h 0.000s [Login] sent\n" : "");
}

}  // namespace
}  // namespace kavio::test
