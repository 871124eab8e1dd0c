#include "platform/linux/sqlite_stores.h"

#include "platform/linux/memory_store.h"
#include "platform/linux/private_files.h"
#include "platform/linux/sqlite_suite.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

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
        } catch (const std::exception&) {
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
