#pragma once

#include <kavio/platform/device.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

namespace kavio {

// Files and folders that only their user can access, whatever the umask. Failures are thrown as `std::system_error`.

/// Makes the folder and any missing parents, and returns its path without symbolic links.
std::filesystem::path makePrivateFolder(const std::filesystem::path& path);
/// Makes an empty file, or takes other users' access to an existing one away. Refuses anything but a plain file, such
/// as a symbolic link.
void makePrivateFile(const std::filesystem::path& path);

/// Removes the file if it was last changed more than `age` ago or, because a clock was wrong, that far in the future.
void removeIfOlder(const std::filesystem::path& path, std::chrono::seconds age);

/// A file name that can stand for any text: letters, digits, "-", "_" and "." stand for themselves, other bytes and a
/// leading "." are escaped as in "%2F", and a long text is cut, with its `digest` in place of the rest. Two texts never
/// share a name.
std::string fileNameFor(std::string_view text, const Digest& digest);

}  // namespace kavio
