#pragma once

#include <kavio/platform/device.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

namespace kavio {

// Files and folders that are their user's alone, whatever the umask. Failures are thrown as `std::system_error`.

/// Makes the folder and its parents, as far as they are missing, and gives its path without symbolic links.
std::filesystem::path makePrivateFolder(const std::filesystem::path& path);
/// Makes an empty file, or takes access to the one that is there from others. Refuses what is no plain file, such as a
/// symbolic link.
void makePrivateFile(const std::filesystem::path& path);

/// Removes the file when it was last changed more than `age` ago or, by a clock that was wrong, ahead.
void removeIfOlder(const std::filesystem::path& path, std::chrono::seconds age);

/// A name for a file that stands for any text: letters, digits, "-", "_" and "." stand for themselves, other bytes and
/// a "." in front are escaped as "%2F", and a long text is cut and carries `digest` instead of its end. Two texts never
/// share a name.
std::string fileNameFor(std::string_view text, const Digest& digest);

}  // namespace kavio
