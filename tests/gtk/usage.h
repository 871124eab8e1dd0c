#pragma once

#include <sys/socket.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>

namespace kavio::test {

/// What this process has in use.
struct Usage {
    std::size_t files = 0;  // without network connections, of which the library keeps some for its next requests
    std::size_t threads = 0;
    std::size_t pages = 0;  // of memory, in RAM

    static Usage now() {
        Usage usage;
        for (const auto& file : std::filesystem::directory_iterator("/proc/self/fd"))
            if (!isOnNetwork(std::stoi(file.path().filename()))) ++usage.files;
        using Entries = std::filesystem::directory_iterator;
        usage.threads = static_cast<std::size_t>(std::distance(Entries("/proc/self/task"), {}));
        std::size_t total = 0;
        std::ifstream("/proc/self/statm") >> total >> usage.pages;
        return usage;
    }

private:
    static bool isOnNetwork(int file) {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        return ::getsockname(file, reinterpret_cast<sockaddr*>(&address), &size) == 0 && address.ss_family != AF_UNIX;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Usage& usage) {
    return out << usage.files << " open files, " << usage.threads << " threads, " << usage.pages << " pages of memory";
}

}  // namespace kavio::test
