#pragma once

#include <kavio/platform/platform.h>
#include <kavio/testing/eventually.h>
#include <kavio/testing/temporary_folder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>

// The suites in this folder judge a port: each test is one promise of include/kavio/platform, and its failures say
// which one was broken. A program includes each of these headers in one source file only.

namespace kavio::test {

/// A port, as the suites see it. A part that its platform does not have is skipped.
struct Port {
    std::string name;  ///< shown with each test
    /// Makes the platform afresh, as a program does that starts. What it stores is in `folder`: the same folder is the
    /// same device, later or, if it `sharesStores`, at the same time.
    std::function<std::shared_ptr<Platform>(const std::filesystem::path& folder)> start;
    /// Lets the main thread, on which the tests run, do its work until `done`; false if that takes too long.
    std::function<bool(Platform& platform, const std::function<bool()>& done)> runUntil{};
    /// What is in the application's bundle, among other things.
    std::map<std::string, Bundle::Value> information{};
    /// Texts of the library that the bundle translates, and what to.
    std::map<std::string, std::string> translations{};
    /// Whether programs that use one folder see each other's values.
    bool sharesStores = false;
    /// Makes every write of these stores fail, as on a full disk, or ends that. Unset where tests cannot do this.
    std::function<void(Platform& platform, bool fail)> failWrites{};
};

/// Its name.
inline std::ostream& operator<<(std::ostream& out, const Port& port) { return out << port.name; }

/// What the suites of a platform share.
class PortConformance : public testing::TestWithParam<Port> {
protected:
    const Port& port() const { return GetParam(); }

    const TemporaryFolder folder;
    std::shared_ptr<Platform> platform = port().start(folder.path());
};

}  // namespace kavio::test

/// Ends a test of a part that the port does not have.
#define KAVIO_NEEDS(part) \
    if (!(part)) GTEST_SKIP() << "The port has no " #part "."
