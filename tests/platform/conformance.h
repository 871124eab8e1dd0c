#pragma once

#include "support/temporary_folder.h"

#include <kavio/platform/platform.h>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

namespace kavio::test {

/// An implementation of the seam, and how a test lets its main thread run until `done`.
struct Subject {
    std::string name;
    std::function<Platform(const std::filesystem::path& folder)> make;
    std::function<bool(MainQueue& queue, const std::function<bool()>& done)> runMainThread;
};

inline std::ostream& operator<<(std::ostream& out, const Subject& subject) { return out << subject.name; }

/// The implementations that are to keep the promises of include/kavio/platform: a port adds itself.
std::vector<Subject> subjects();

/// Each test runs on every implementation.
class Conformance : public testing::TestWithParam<Subject> {
protected:
    bool runMainThread(const std::function<bool()>& done) {
        return GetParam().runMainThread(*platform.mainQueue, done);
    }

    const TemporaryFolder folder;
    Platform platform = GetParam().make(folder.path());
};

}  // namespace kavio::test
