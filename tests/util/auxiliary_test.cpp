#include "util/auxiliary.h"

#include "support/fakes/fake_device.h"
#include "util/service_object.h"
#include "util/trace.h"

#include <gtest/gtest.h>

#include <limits>

namespace kavio::test {
namespace {

TEST(Auxiliary, WritesDurations) {
    for (const auto& [milliseconds, text] : std::vector<std::pair<std::uint64_t, const char*>>{
             {0, "0.000s"},
             {59'999, "59.999s"},
             {60'000, "1m 0.000s"},
             {3'600'000, "1h 0.000s"},
             {86'399'999, "23h 59m 59.999s"},
             {86'400'000, "1d 0.000s"},
             {90'061'005, "1d 1h 1m 1.005s"},
             {std::numeric_limits<std::uint64_t>::max(), "213503982334d 14h 25m 51.615s"},
         }) {
        EXPECT_EQ(Auxiliary::durationText(milliseconds), text);
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

struct Other {
    virtual ~Other() = default;
    int member = 0;
};
/// The object's address is not the address of its `ServiceObject` part.
class Service : public Other, public ServiceObject {};

TEST(ServiceObject, IsReleasedByItselfAlone) {
    Service service;
    const Service another;
    service.release(nullptr);
    service.release(&another);
    EXPECT_FALSE(service.isReleased());
    service.release(&service);
    service.release(&another);
    EXPECT_TRUE(service.isReleased());
}

}  // namespace
}  // namespace kavio::test
