#include "platform/linux/sqlite_stores.h"

#include "platform/linux/memory_store.h"
#include "platform/linux/private_files.h"
#include "platform/linux/suite_file.h"

#include <pwd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace kavio {
namespace {

/// Empty if the user has no home.
std::filesystem::path userDataFolder() {
    if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && *data == '/') return data;
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') {
        return std::filesystem::path(home) / ".local/share";
    }
    const auto* user = ::getpwuid(::geteuid());
    return user == nullptr ? std::filesystem::path() : std::filesystem::path(user->pw_dir) / ".local/share";
}

/// Whether another process holds the file, for longer than we are ready to wait.
bool isBusy(const std::exception& failure) {
    const auto* error = dynamic_cast<const SqliteError*>(&failure);
    return error != nullptr && error->isBusy();
}

bool isLackOfMemory(const std::exception& failure) {
    if (const auto* error = dynamic_cast<const SqliteError*>(&failure)) return error->isLackOfMemory();
    if (const auto* error = dynamic_cast<const std::system_error*>(&failure))
        return error->code() == std::errc::not_enough_memory;
    return dynamic_cast<const std::bad_alloc*>(&failure) != nullptr;
}

/// Passing failures rarely come twice, and two fresh files that also prove damaged are enough.
constexpr int mostAttempts = 3;

/// A suite as an SQLite file. A damaged file is set aside, and the suite goes on with a fresh one.
class SqliteSuite final : public KeyValueStore {
public:
    SqliteSuite(std::filesystem::path path, std::shared_ptr<const Digest> digest, OnStoreDamaged onDamaged)
        : mPath(std::move(path)), mDigest(std::move(digest)), mOnDamaged(std::move(onDamaged)) {}

    /// Whether the file can be read; one that another process is holding counts as readable. Reports it if not.
    bool isUsable() const {
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

    std::optional<StoredValue> value(std::string_view key) const override { return values({key}).front(); }

    std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys) const override {
        std::vector<std::optional<StoredValue>> found;
        use([&](SuiteFile& file) { found = file.values(keys); });
        found.resize(keys.size());
        return found;
    }

    std::vector<std::string> keys() const override {
        std::vector<std::string> found;
        use([&](SuiteFile& file) { found = file.keys(); });
        return found;
    }

    bool write(const StoreChanges& changes) override {
        bool isKept = false;
        use([&](SuiteFile& file) { isKept = file.write(changes); });
        return isKept;
    }

private:
    using Work = std::function<void(SuiteFile&)>;

    enum class Outcome { DONE, FAILED, OUT_OF_MEMORY };

    /// Runs `work` on the file and, if it fails, again: on its successor if it was set aside. False if that does
    /// not help.
    bool use(const Work& work) const {
        std::vector<std::filesystem::path> reports;
        const auto outcome = useLocked(work, reports);
        for (const auto& setAside : reports) report(setAside);
        if (outcome == Outcome::OUT_OF_MEMORY) throw std::bad_alloc();
        return outcome == Outcome::DONE;
    }

    Outcome useLocked(const Work& work, std::vector<std::filesystem::path>& reports) const {
        const std::lock_guard lock(mMutex);
        auto outcome = Outcome::FAILED;
        for (int left = mostAttempts; left > 0; --left) {
            outcome = Outcome::FAILED;
            try {
                if (!mFile) mFile = std::make_unique<SuiteFile>(mPath, mDigest);
                work(*mFile);
                return Outcome::DONE;
            } catch (const SuiteFile::Moved& moved) {
                mFile.reset();
                if (!moved.setAside.empty()) reports.push_back(moved.setAside);
            } catch (const SuiteFile::Unusable&) {
                mFile.reset();
                if (!mIsUnusable.exchange(true)) reports.emplace_back();
                return Outcome::FAILED;
            } catch (const std::exception& failure) {  // the next attempt may do better
                if (isBusy(failure)) return Outcome::FAILED;
                if (isLackOfMemory(failure)) outcome = Outcome::OUT_OF_MEMORY;
            }
        }
        return outcome;
    }

    void report(const std::filesystem::path& setAside) const {
        try {
            if (mOnDamaged) mOnDamaged(mPath, setAside);
        } catch (...) {  // NOLINT(bugprone-empty-catch): what the host's code throws has nobody to go to
        }
    }

    const std::filesystem::path mPath;
    const std::shared_ptr<const Digest> mDigest;
    const OnStoreDamaged mOnDamaged;
    mutable std::mutex mMutex;
    mutable std::unique_ptr<SuiteFile> mFile;       // if null, opened on the next use
    mutable std::atomic<bool> mIsUnusable = false;  // and that was reported
};

/// The only open suite of a file.
std::shared_ptr<SqliteSuite> openSuite(const std::filesystem::path& file, const std::shared_ptr<const Digest>& digest,
                                       const OnStoreDamaged& onDamaged) {
    // Never destroyed: background threads may outlive the statics of the program.
    static auto& mutex = *new std::mutex;
    static auto& suites = *new std::map<std::filesystem::path, std::weak_ptr<SqliteSuite>>;
    const std::lock_guard lock(mutex);
    auto& known = suites[file];
    auto suite = known.lock();
    if (!suite) known = suite = std::make_shared<SqliteSuite>(file, digest, onDamaged);
    return suite;
}

class SqliteStores final : public KeyValueStores {
public:
    SqliteStores(std::filesystem::path directory, std::shared_ptr<const Digest> digest, OnStoreDamaged onDamaged)
        : mDirectory(std::move(directory)), mDigest(std::move(digest)), mOnDamaged(std::move(onDamaged)) {}

    std::shared_ptr<KeyValueStore> suite(std::string_view name) override {
        const auto fileName = fileNameFor(name, *mDigest) + ".suite.sqlite";
        try {
            const auto suite = openSuite(makePrivateFolder(mDirectory) / fileName, mDigest, mOnDamaged);
            return suite->isUsable() ? suite : nullptr;  // if not, it has reported itself
        } catch (const std::exception& failure) {
            if (isLackOfMemory(failure)) throw std::bad_alloc();  // it says nothing about the file
            reportUnusable(mDirectory / fileName);
            return nullptr;
        }
    }

    std::shared_ptr<KeyValueStore> standard() override { return mStandard; }

private:
    void reportUnusable(const std::filesystem::path& file) const {
        try {
            if (mOnDamaged) mOnDamaged(file, {});
        } catch (...) {  // NOLINT(bugprone-empty-catch): what the host's code throws has nobody to go to
        }
    }

    const std::filesystem::path mDirectory;
    const std::shared_ptr<const Digest> mDigest;
    const OnStoreDamaged mOnDamaged;
    const std::shared_ptr<KeyValueStore> mStandard = std::make_shared<MemoryStore>();
};

}  // namespace

std::filesystem::path defaultStoreFolder(const std::optional<std::string>& identifier, const Digest& digest) {
    const auto data = userDataFolder();
    if (data.empty()) return {};
    const bool isNamed = identifier && !identifier->empty();
    const std::string program = isNamed ? *identifier : program_invocation_short_name;
    return data / "kavio" / fileNameFor(program, digest);
}

std::shared_ptr<KeyValueStores> makeSqliteStores(std::filesystem::path directory, std::shared_ptr<const Digest> digest,
                                                 OnStoreDamaged onDamaged) {
    return std::make_shared<SqliteStores>(std::move(directory), std::move(digest), std::move(onDamaged));
}

}  // namespace kavio
