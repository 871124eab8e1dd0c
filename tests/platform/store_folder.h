#pragma once

#include "platform/linux/openssl.h"
#include "platform/linux/sqlite_stores.h"
#include "support/temporary_folder.h"

#include <kavio/platform/key_value_store.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace kavio::test {

/// A store folder with one suite, and the reports of its damage.
struct StoreFolder {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "deep/store";
    const std::filesystem::path file = path / "suite.suite.sqlite";
    std::vector<std::filesystem::path> setAside;

    std::shared_ptr<KeyValueStores> stores() {
        return makeSqliteStores(path, makeOpensslDigest(), [this](const auto& damaged, const auto& moved) {
            if (damaged == file) setAside.push_back(moved);
        });
    }

    /// Opens the file anew as soon as nobody holds the suite any more.
    std::shared_ptr<KeyValueStore> suite() { return stores()->suite("suite"); }

    static std::string contents(const std::filesystem::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    static void replaceContents(const std::filesystem::path& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }

    /// The names of all files in the folder, sorted.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path)) names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }
};

}  // namespace kavio::test
