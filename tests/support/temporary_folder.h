#pragma once

#include <filesystem>

namespace kavio::test {

/// A fresh folder, in memory where the system offers that, which goes with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

}  // namespace kavio::test
