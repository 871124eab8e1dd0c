#pragma once

#include <kavio/platform/device.h>
#include <kavio/platform/key_value_store.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// `setAside` is empty where the file stays as it is and cannot be used.
using OnStoreDamaged = std::function<void(const std::filesystem::path& damaged, const std::filesystem::path& setAside)>;

/// The store folder of a program that chooses none: its own one in the user's data folder, named by its identifier or,
/// without one, as the program is. Empty where the user has no home.
std::filesystem::path defaultStoreFolder(const std::optional<std::string>& identifier, const Digest& digest);

/// Suites as SQLite files in `directory`. Within the process a file is open once, and its damage is reported to whoever
/// opened it first. The standard store lives in memory: it stands in for a suite that cannot be used, and values kept
/// in a file of its own would come back, long outdated, the next time that it is needed.
std::shared_ptr<KeyValueStores> makeSqliteStores(std::filesystem::path directory, std::shared_ptr<const Digest> digest,
                                                 OnStoreDamaged onDamaged);

}  // namespace kavio
