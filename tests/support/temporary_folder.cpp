#include "support/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace kavio::test {

TemporaryFolder::TemporaryFolder() {
    const std::filesystem::path memory = "/dev/shm";
    const auto parent = std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::string name = parent / "kavio-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
    mPath = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

}  // namespace kavio::test
