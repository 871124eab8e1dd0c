#pragma once

#include <kavio/platform/device.h>

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

/// A path beside `path` at which there is nothing yet: "PATH.damaged-20240131-235959", with "-2" and so on where
/// needed.
std::filesystem::path unusedDamagedPath(const std::filesystem::path& path);
void moveIfThere(const std::filesystem::path& from, const std::filesystem::path& to);

/// A name for a file that stands for any text: letters, digits, "-", "_" and "." stand for themselves, other bytes are
/// escaped as "%2F", and a long text is cut and carries `digest` instead of its end. Two texts never share a name.
std::string fileNameFor(std::string_view text, const Digest& digest);

}  // namespace kavio
