#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>

namespace kavio::test {

/// What this process has in use.
struct Usage {
    std::size_t files = 0;
    std::size_t threads = 0;
    std::size_t pages = 0;  // of memory, in RAM

    static Usage now() {
        const auto entries = [](const char* folder) {
            return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
        };
        Usage usage{.files = entries("/proc/self/fd"), .threads = entries("/proc/self/task")};
        std::size_t total = 0;
        std::ifstream("/proc/self/statm") >> total >> usage.pages;
        return usage;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Usage& usage) {
    return out << usage.files << " open files, " << usage.threads << " threads, " << usage.pages << " pages of memory";
}

}  // namespace kavio::test
