#include "platform/linux/sqlite_suite.h"

#include <utility>

namespace kavio {
namespace {

/// Two fresh files that prove damaged too are enough.
constexpr int mostAttempts = 3;

}  // namespace

SqliteSuite::SqliteSuite(std::filesystem::path path, std::shared_ptr<const Digest> digest, OnStoreDamaged onDamaged)
    : mPath(std::move(path)), mDigest(std::move(digest)), mOnDamaged(std::move(onDamaged)) {}

bool SqliteSuite::isUsable() const {
    return use([](SuiteFile& file) {
        try {
            file.refresh();
        } catch (const SqliteError& error) {
            if (!error.isBusy()) throw;
        }
    });
}

std::optional<StoredValue> SqliteSuite::value(std::string_view key) const { return values({key}).front(); }

std::vector<std::optional<StoredValue>> SqliteSuite::values(std::initializer_list<std::string_view> keys) const {
    std::vector<std::optional<StoredValue>> found(keys.size());
    use([&](SuiteFile& file) { found = file.values(keys); });
    return found;
}

bool SqliteSuite::write(const StoreChanges& changes) {
    bool isKept = false;
    use([&](SuiteFile& file) { isKept = file.write(changes); });
    return isKept;
}

bool SqliteSuite::use(const Work& work) const {
    std::vector<std::filesystem::path> setAside;  // an empty path: the damaged file had to stay
    const bool succeeded = useLocked(work, setAside);
    for (const auto& path : setAside) report(path);
    return succeeded;
}

bool SqliteSuite::useLocked(const Work& work, std::vector<std::filesystem::path>& setAside) const {
    const std::lock_guard lock(mMutex);
    bool isDamaged = false;
    for (int left = mostAttempts; left > 0; --left) {
        try {
            if (isDamaged) {
                setAside.push_back(mFile->setAside());
                mFile.reset();
                isDamaged = false;
            }
            if (!mFile) mFile = std::make_unique<SuiteFile>(mPath, mDigest);
            work(*mFile);
            return true;
        } catch (const SuiteFile::Moved&) {
            mFile.reset();
            isDamaged = false;
        } catch (const SqliteError& error) {
            if (isDamaged || !error.isDamage()) break;
            isDamaged = true;
        } catch (const std::exception&) {
            break;
        }
    }
    if (isDamaged) {
        mFile.reset();  // it may hold the exclusive lock
        if (!std::exchange(mHasStuckFile, true)) setAside.emplace_back();
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
