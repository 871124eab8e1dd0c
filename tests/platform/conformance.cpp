#include "platform/conformance.h"

#include "support/fakes/fake_device.h"

#include <kavio/platform/linux.h>

namespace kavio::test {

std::vector<Subject> subjects() {
    return {
        {"Linux",
         [](const std::filesystem::path& folder) {
             LinuxPlatformOptions options;
             options.storeDirectory = folder / "store";
             options.information = {{"text", std::string("t")}, {"number", std::int64_t{7}}};
             options.localizedStrings = {{"hello", "hallo"}};
             return makeLinuxPlatform(std::move(options));
         },
         [](MainQueue& queue, const std::function<bool()>& done) {
             return dynamic_cast<RunLoop&>(queue).runUntil(done, std::chrono::seconds(20));
         }},
        {"Scripted",
         [](const std::filesystem::path&) {
             const FakeDevice device;
             device.mainBundle->information = {{"text", std::string("t")}, {"number", std::int64_t{7}}};
             device.mainBundle->strings = {{"hello", "hallo"}};
             device.libraryBundle->information = {{"CFBundleShortVersionString", std::string("1.2.3")},
                                                  {"CFBundleVersion", std::string("45")}};
             return device.platform();
         },
         [](MainQueue& queue, const std::function<bool()>& done) {
             for (int steps = 0; !done() && steps < 20'000; ++steps) {
                 dynamic_cast<FakeMainQueue&>(queue).advance(std::chrono::milliseconds(1));
             }
             return done();
         }},
    };
}

}  // namespace kavio::test
