#pragma once

#include "platform/linux/openssl.h"
#include "platform/linux/sqlite_stores.h"
#include "support/temporary_folder.h"

#include <kavio/platform/key_value_store.h>

#include <filesystem>
#include <fstream>
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

    /// Opens the file anew as soon as nobody holds the suite any more.
    std::shared_ptr<KeyValueStore> suite() {
        const auto note = [this](const auto& damaged, const auto& moved) {
            if (damaged == file) setAside.push_back(moved);
        };
        return makeSqliteStores(path, makeOpensslDigest(), note)->suite("suite");
    }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path)) names.push_back(entry.path().filename());
        return names;
    }
};

}  // namespace kavio::test
