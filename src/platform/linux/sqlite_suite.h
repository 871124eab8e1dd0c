#pragma once

#include "platform/linux/sqlite_stores.h"
#include "platform/linux/suite_file.h"

#include <kavio/platform/key_value_store.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// A suite as an SQLite file. A damaged file is set aside, and the suite goes on with a fresh one.
class SqliteSuite final : public KeyValueStore {
public:
    SqliteSuite(std::filesystem::path path, std::shared_ptr<const Digest> digest, OnStoreDamaged onDamaged);

    /// Whether the file can be read; one that another process is holding counts as readable. Reports it if not.
    bool isUsable() const;
    std::optional<StoredValue> value(std::string_view key) const override;
    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys) const override;
    std::vector<std::string> keys() const override;
    bool write(const StoreChanges& changes) override;

private:
    using Work = std::function<void(SuiteFile&)>;

    /// Runs `work` on the file and, if it fails, again: on its successor if it was set aside. False if that does
    /// not help.
    bool use(const Work& work) const;
    bool useLocked(const Work& work, std::vector<std::filesystem::path>& reports) const;
    void report(const std::filesystem::path& setAside) const;

    const std::filesystem::path mPath;
    const std::shared_ptr<const Digest> mDigest;
    const OnStoreDamaged mOnDamaged;
    mutable std::mutex mMutex;
    mutable std::unique_ptr<SuiteFile> mFile;       // if null, opened on the next use
    mutable std::atomic<bool> mIsUnusable = false;  // and that was reported
};

}  // namespace kavio
