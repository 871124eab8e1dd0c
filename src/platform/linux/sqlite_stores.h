#pragma once

#include <kavio/platform/device.h>
#include <kavio/platform/key_value_store.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// `setAside` is empty if the file stays as it is and cannot be used.
using OnStoreDamaged = std::function<void(const std::filesystem::path& damaged, const std::filesystem::path& setAside)>;

/// The store folder of a program that chooses none: its own folder in the user's data folder, named after its
/// identifier or, without one, after the program. Empty if the user has no home.
std::filesystem::path defaultStoreFolder(const std::optional<std::string>& identifier, const Digest& digest);

/// Suites as SQLite files in `directory`. A process opens a file only once, and damage is reported to whoever opened it
/// first. The standard store lives in memory: it stands in for a suite that cannot be used, and values kept in its own
/// file would come back, long out of date, the next time it is needed.
std::shared_ptr<KeyValueStores> makeSqliteStores(std::filesystem::path directory, std::shared_ptr<const Digest> digest,
                                                 OnStoreDamaged onDamaged);

}  // namespace kavio
