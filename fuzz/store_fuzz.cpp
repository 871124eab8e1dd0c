// The file of the store, as somebody may have left it. The last two bytes say how many before them are not the file's
// but those of the journal that an interrupted write would have left beside it.

#include "fuzz.h"
#include "platform/linux/sqlite_stores.h"

#include <kavio/testing/temporary_folder.h>

#include <fstream>

namespace kavio::fuzz {
namespace {

/// Every checksum fits, or nothing that somebody forges would get past it.
struct BlindDigest final : Digest {
    Sha1 sha1(std::string_view) const override { return {}; }
};

const std::string key = "key of the fuzzer";

struct Store {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = std::filesystem::canonical(folder.path()) / "suite.suite.sqlite";
    std::vector<std::filesystem::path> setAside;  // an empty path if the file cannot be used

    void leave(const std::string& contents, const std::string& journal) {
        setAside.clear();
        for (const auto& old : std::filesystem::directory_iterator(folder.path())) std::filesystem::remove(old);
        std::ofstream(file, std::ios::binary) << contents;
        if (!journal.empty()) std::ofstream(file.string() + "-journal", std::ios::binary) << journal;
    }
    std::shared_ptr<KeyValueStore> open() {
        const auto note = [this](const auto&, const auto& moved) { setAside.push_back(moved); };
        return makeSqliteStores(folder.path(), std::make_shared<BlindDigest>(), note)->suite("suite");
    }
};

using Values = std::map<std::string, std::optional<StoredValue>>;

Values valuesIn(const KeyValueStore& suite) {
    Values values;
    for (const auto& name : suite.keys()) {
        values[name] = suite.value(name);
        must(values[name].has_value(), "a key has a value");
    }
    return values;
}

/// The header is SQLite's own: it counts changes, and says which kind of journal the file has.
bool isKept(const std::string& found, const std::string& left) {
    constexpr std::size_t header = 100;
    return found.size() == left.size() &&
           (left.size() <= header || found.compare(header, std::string::npos, left, header) == 0);
}

/// A write is there afterwards, also for whoever opens the file next, and one that failed has changed nothing.
void change(Store& store, std::shared_ptr<KeyValueStore> suite) {
    auto values = valuesIn(*suite);
    StoreChanges changes{{key, StoredValue("new")}};
    if (!values.empty()) changes.emplace(values.begin()->first, std::nullopt);
    if (suite->write(changes)) {
        for (const auto& [name, value] : changes) {
            if (value)
                values[name] = value;
            else
                values.erase(name);
        }
    } else if (!store.setAside.empty()) {
        return;  // the damage came to light only now
    }
    must(valuesIn(*suite) == values, "a suite has what was written");
    suite.reset();
    suite = store.open();
    must(suite && valuesIn(*suite) == values, "what was written is kept");
}

}  // namespace

void tryInput(Input input) {
    static Store store;
    auto contents = input.rest();
    std::string journal;
    if (contents.size() >= 2) {
        const auto high = static_cast<unsigned char>(contents[contents.size() - 2]);
        const auto low = static_cast<unsigned char>(contents.back());
        contents.resize(contents.size() - 2);
        const auto size = std::min<std::size_t>(high * 256U + low, contents.size());
        journal = contents.substr(contents.size() - size);
        contents.resize(contents.size() - size);
    }
    store.leave(contents, journal);

    auto suite = store.open();
    if (!suite) {
        must(store.setAside == std::vector<std::filesystem::path>{{}}, "a file that cannot be used is reported");
        return must(!journal.empty() || test::contents(store.file) == contents, "and stays as it is");
    }
    must(store.setAside.size() <= 1, "a file is set aside once");
    if (!store.setAside.empty()) {
        must(valuesIn(*suite).empty(), "the file instead of a damaged one is empty");
        must(!journal.empty() || isKept(test::contents(store.setAside.front()), contents), "a damaged file is kept");
    }
    change(store, std::move(suite));
}

}  // namespace kavio::fuzz
