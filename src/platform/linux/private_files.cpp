#include "platform/linux/private_files.h"

#include "platform/linux/hexadecimal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <system_error>

namespace kavio {
namespace {

constexpr mode_t ownFolder = 0700;
constexpr mode_t ownFile = 0600;
constexpr std::size_t longestFileName = 128;  // of 255, to leave room for what is appended

void check(bool succeeded, const std::filesystem::path& path) {
    if (!succeeded) throw std::system_error(errno, std::generic_category(), path);
}

void makeFolders(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) return;
    if (path.has_parent_path() && path.parent_path() != path) makeFolders(path.parent_path());
    if (::mkdir(path.c_str(), ownFolder) == 0) return check(::chmod(path.c_str(), ownFolder) == 0, path);
    check(errno == EEXIST && std::filesystem::is_directory(path), path);  // another process was quicker
}

bool isUsual(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x80 && (std::isalnum(value) != 0 || byte == '-' || byte == '_' || byte == '.');
}

}  // namespace

std::filesystem::path makePrivateFolder(const std::filesystem::path& path) {
    makeFolders(path.lexically_normal());
    return std::filesystem::canonical(path);
}

void makePrivateFile(const std::filesystem::path& path) {
    // O_EXCL never opens what exists: closing such a descriptor would drop the locks that SQLite may hold on the file.
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownFile);
    if (file >= 0) {
        const bool isPrivate = ::fchmod(file, ownFile) == 0;
        ::close(file);
        return check(isPrivate, path);
    }
    check(errno == EEXIST, path);

    struct stat status {};
    check(::lstat(path.c_str(), &status) == 0, path);
    if (!S_ISREG(status.st_mode)) throw std::system_error(ELOOP, std::generic_category(), path);
    if ((status.st_mode & 0777) != ownFile) check(::chmod(path.c_str(), ownFile) == 0, path);
}

void removeIfOlder(const std::filesystem::path& path, std::chrono::seconds age) {
    std::error_code failure;
    const auto changed = std::filesystem::last_write_time(path, failure);
    if (failure) return;  // no such file
    if (std::chrono::abs(decltype(changed)::clock::now() - changed) > age) std::filesystem::remove(path, failure);
}

std::string fileNameFor(std::string_view text, const Digest& digest) {
    std::string name;
    for (const char byte : text) {
        const bool isDotInFront = byte == '.' && name.empty();
        if (isUsual(byte) && !isDotInFront) {
            name += byte;
        } else {
            name += '%';
            appendHexadecimal(name, static_cast<std::uint8_t>(byte));
        }
    }
    if (name.size() <= longestFileName) return name;

    name.resize(longestFileName);
    name += "%~";  // not an escape, so no other text has this name
    for (const auto byte : digest.sha1(text)) appendHexadecimal(name, byte);
    return name;
}

}  // namespace kavio
