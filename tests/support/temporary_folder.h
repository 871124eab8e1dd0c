#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace kavio::test {

inline std::string contents(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// A fresh folder, in memory if the system offers that, which is removed afterwards with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        const std::filesystem::path memory = "/dev/shm";
        const auto parent = std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
        std::string name = parent / "kavio-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
        mPath = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

}  // namespace kavio::test
