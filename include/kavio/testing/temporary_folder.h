#pragma once

#include <kavio/export.h>

#include <filesystem>
#include <string>

namespace kavio::test {

/// All bytes of a file; none if it cannot be read.
KAVIO_API std::string contents(const std::filesystem::path& file);

/// A fresh folder, in memory if the system offers that, which is removed afterwards with everything in it.
class KAVIO_API TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Where it is.
    const std::filesystem::path& path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

}  // namespace kavio::test
