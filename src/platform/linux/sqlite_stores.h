#pragma once

#include <kavio/platform/device.h>
#include <kavio/platform/key_value_store.h>

#include <filesystem>
#include <functional>
#include <memory>

namespace kavio {

using OnStoreDamaged = std::function<void(const std::filesystem::path& damaged, const std::filesystem::path& setAside)>;

/// Suites as SQLite files in `directory`; an empty one stands for the user's data folder. Within the process a file is
/// open once, and its damage is reported to whoever opened it first.
std::shared_ptr<KeyValueStores> makeSqliteStores(std::filesystem::path directory, std::shared_ptr<const Digest> digest,
                                                 OnStoreDamaged onDamaged);

}  // namespace kavio
