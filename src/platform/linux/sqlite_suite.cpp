#include "platform/linux/sqlite_suite.h"

#include <utility>

namespace kavio {
namespace {

/// Passing failures rarely come twice, and two fresh files that also prove damaged are enough.
constexpr int mostAttempts = 3;

}  // namespace

SqliteSuite::SqliteSuite(std::filesystem::path path, std::shared_ptr<const Digest> digest, OnStoreDamaged onDamaged)
    : mPath(std::move(path)), mDigest(std::move(digest)), mOnDamaged(std::move(onDamaged)) {}

bool SqliteSuite::isUsable() const {
    const bool isReadable = use([](SuiteFile& file) {
        try {
            file.refresh();
        } catch (const SqliteError& error) {
            if (!error.isBusy()) throw;
        }
    });
    if (!isReadable && !mIsUnusable.exchange(true)) report({});
    return isReadable;
}

std::optional<StoredValue> SqliteSuite::value(std::string_view key) const { return values({key}).front(); }

std::vector<std::optional<StoredValue>> SqliteSuite::values(std::initializer_list<std::string_view> keys) const {
    std::vector<std::optional<StoredValue>> found(keys.size());
    use([&](SuiteFile& file) { found = file.values(keys); });
    return found;
}

std::vector<std::string> SqliteSuite::keys() const {
    std::vector<std::string> found;
    use([&](SuiteFile& file) { found = file.keys(); });
    return found;
}

bool SqliteSuite::write(const StoreChanges& changes) {
    bool isKept = false;
    use([&](SuiteFile& file) { isKept = file.write(changes); });
    return isKept;
}

bool SqliteSuite::use(const Work& work) const {
    std::vector<std::filesystem::path> reports;
    const bool succeeded = useLocked(work, reports);
    for (const auto& setAside : reports) report(setAside);
    return succeeded;
}

bool SqliteSuite::useLocked(const Work& work, std::vector<std::filesystem::path>& reports) const {
    const std::lock_guard lock(mMutex);
    for (int left = mostAttempts; left > 0; --left) {
        try {
            if (!mFile) mFile = std::make_unique<SuiteFile>(mPath, mDigest);
            work(*mFile);
            return true;
        } catch (const SuiteFile::Moved& moved) {
            mFile.reset();
            if (!moved.setAside.empty()) reports.push_back(moved.setAside);
        } catch (const SuiteFile::Unusable&) {
            mFile.reset();
            if (!mIsUnusable.exchange(true)) reports.emplace_back();
            return false;
        } catch (const SqliteError& error) {
            if (error.isBusy()) return false;  // for longer than we are ready to wait
        } catch (const std::exception&) {      // NOLINT(bugprone-empty-catch): the next attempt may do better
        }
    }
    return false;
}

void SqliteSuite::report(const std::filesystem::path& setAside) const {
    try {
        if (mOnDamaged) mOnDamaged(mPath, setAside);
    } catch (...) {  // NOLINT(bugprone-empty-catch): what the host's code throws has nobody to go to
    }
}

}  // namespace kavio
