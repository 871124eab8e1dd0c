#pragma once

// What the key/value stores of a device promise.
//   INSTANTIATE_TEST_SUITE_P(Mine, StoresConformance, testing::Values(port));

#include <kavio/testing/conformance/port.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace kavio::test {

/// All that a store holds.
inline std::map<std::string, StoredValue> everythingIn(const KeyValueStore& store) {
    std::map<std::string, StoredValue> all;
    for (const auto& key : store.keys()) {
        if (auto value = store.value(key)) all.emplace(key, std::move(*value));
    }
    return all;
}

/// What the key/value stores promise.
class StoresConformance : public PortConformance {
protected:
    void SetUp() override { KAVIO_NEEDS(platform->keyValueStores); }
    std::shared_ptr<KeyValueStore> suite(std::string_view name = "suite") const {
        return platform->keyValueStores->suite(name);
    }
    /// The program ends and starts again.
    void startAgain() {
        platform.reset();
        platform = port().start(folder.path());
    }
};

TEST_P(StoresConformance, KeepEveryValueAsItIsAndReadItAsNoOtherType) {
    const auto store = suite();
    const auto date = [](double seconds) { return Date(std::chrono::duration<double>(seconds)); };
    for (const auto& value : std::vector<StoredValue>{
             std::string(),
             std::string("nul\0inside", 10),
             std::string("\xC3\x28 ill-formed"),
             std::string(300'000, 'x'),
             Bytes{},
             Bytes{0, 1, 255},
             date(-1.25),
             date(1e300),
         }) {
        EXPECT_TRUE(store->set("key", value)) << "A value was refused.";
        EXPECT_EQ(store->value("key"), value) << "A write returned true, but what it wrote was not kept as it was.";
        EXPECT_EQ(store->string("key").has_value(), std::holds_alternative<std::string>(value))
            << "Only a text reads as a text.";
        EXPECT_EQ(store->data("key").has_value(), std::holds_alternative<Bytes>(value)) << "Only bytes read as bytes.";
        EXPECT_EQ(store->date("key").has_value(), std::holds_alternative<Date>(value))
            << "Only a date reads as a date.";
    }
}

TEST_P(StoresConformance, RemoveWhatIsRemovedAndNothingElse) {
    const auto store = suite();
    store->write({{"stays", std::string("s")}, {"goes", std::string("g")}});
    for (int times = 0; times < 2; ++times)
        EXPECT_TRUE(store->remove("goes")) << "A removal was refused, even if there was nothing to remove.";
    EXPECT_EQ(store->value("goes"), std::nullopt) << "A key that was removed still has a value.";
    EXPECT_THAT(store->keys(), testing::ElementsAre("stays")) << "The keys are not those that have a value.";
    if (!store->isKept()) return;
    startAgain();
    EXPECT_EQ(suite()->value("goes"), std::nullopt)
        << "A key that was removed has a value again once the program starts again.";
    EXPECT_EQ(suite()->string("stays"), "s") << "Another key than the one removed has lost its value.";
}

TEST_P(StoresConformance, TellAnyTwoNamesApart) {
    const std::string cut(127, 'n');
    std::vector<std::string> names{"", "standard", "..", "../up", "a/b", "a%2Fb", "a:b", "A:b"};
    names.emplace_back("nul\0inside", 10);
    for (const auto* end : {"en", "n%~00", "much longer 1", "much longer 2"}) names.push_back(cut + end);
    std::erase_if(names, [&](const auto& name) { return suite(name) == nullptr; });  // which is allowed
    for (const auto& name : names) suite(name)->set("name", name);
    platform->keyValueStores->standard()->set("name", "the standard store");
    for (const auto& name : names)
        EXPECT_EQ(suite(name)->string("name"), name) << "Suites of different names must not share values.";
    const auto fresh = suite("never written");
    EXPECT_TRUE(!fresh || fresh->keys().empty()) << "A suite that was never written holds the values of another one.";
    EXPECT_EQ(platform->keyValueStores->standard()->string("name"), "the standard store")
        << "The standard store must not share values with a suite.";
}

TEST_P(StoresConformance, GiveTheSameStoreForTheSameName) {
    suite()->set("key", "value");
    EXPECT_EQ(suite()->string("key"), "value") << "A suite that is opened twice must be the same store.";
    platform->keyValueStores->standard()->set("key", "standard");
    EXPECT_EQ(platform->keyValueStores->standard()->string("key"), "standard")
        << "The standard store must be the same each time.";
}

TEST_P(StoresConformance, GiveSeveralValuesInTheOrderOfTheirKeys) {
    const auto store = suite();
    store->write({{"a", std::string("1")}, {"b", std::string("2")}});
    EXPECT_EQ(store->values({"b", "none", "a"}),
              (std::vector<std::optional<StoredValue>>{std::string("2"), std::nullopt, std::string("1")}))
        << "Several values must come in the order of their keys, absent where there is none.";
}

TEST_P(StoresConformance, MakeTheChangesOfOneWriteTogether) {
    const auto store = suite();
    const auto number = [&](const char* key) { return std::stoi(store->string(key).value_or("0")); };
    std::atomic<bool> isWritten = false;
    std::thread writer([&] {
        for (int i = 1; i <= 300; ++i) {
            const auto text = std::to_string(i);
            store->write({{"a", text}, {"b", text}});
        }
        isWritten = true;
    });
    bool isTorn = false;
    while (!isWritten) {
        for (const auto& [earlier, later] : {std::pair("a", "b"), std::pair("b", "a")}) {
            const int read = number(earlier);
            isTorn = isTorn || number(later) < read;
        }
    }
    writer.join();
    EXPECT_FALSE(isTorn) << "The changes of one write were seen one by one instead of together.";
}

TEST_P(StoresConformance, MayBeUsedFromSeveralThreads) {
    const auto store = suite();
    std::vector<std::thread> threads;
    for (const auto* key : {"1", "2", "3"}) {
        threads.emplace_back([=] {
            for (int i = 0; i < 20; ++i) store->set(key, store->string(key).value_or("") + "x");
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto* key : {"1", "2", "3"})
        EXPECT_EQ(store->string(key), std::string(20, 'x')) << "A write was lost to one of another thread.";
}

TEST_P(StoresConformance, KeepWhatWasWrittenWhenTheProgramStartsAgain) {
    if (!suite()->isKept()) GTEST_SKIP() << "These values live in memory.";
    suite("a")->write({{"key", std::string("a")}, {"bytes", Bytes{0, 255}}});
    suite("b")->set("key", "b");
    const auto isStandardKept = platform->keyValueStores->standard()->isKept();
    platform->keyValueStores->standard()->set("key", "standard");
    const auto before = everythingIn(*suite("a"));
    startAgain();
    EXPECT_EQ(everythingIn(*suite("a")), before) << "What was written is not kept when the program starts again.";
    EXPECT_EQ(suite("b")->string("key"), "b") << "What was written is not kept when the program starts again.";
    if (isStandardKept) {
        EXPECT_EQ(platform->keyValueStores->standard()->string("key"), "standard")
            << "What was written to the standard store is not kept when the program starts again.";
    }
}

TEST_P(StoresConformance, ChangeNothingWhenAWriteFails) {
    if (!port().failWrites) GTEST_SKIP() << "The port has no way to make writes fail.";
    const auto store = suite();
    store->write({{"a", std::string("before")}, {"b", std::string("before")}});
    const auto before = everythingIn(*store);
    port().failWrites(*platform, true);
    const bool isWritten =
        store->write({{"a", std::string(100'000, 'x')}, {"b", std::nullopt}, {"c", std::string("new")}});
    port().failWrites(*platform, false);
    EXPECT_FALSE(isWritten) << "A write that could not be made returned true.";
    EXPECT_EQ(everythingIn(*store), before) << "A write that returned false changed something.";
    EXPECT_TRUE(store->set("a", "after")) << "One failed write must not make later ones fail.";
    if (!store->isKept()) return;
    startAgain();
    EXPECT_EQ(suite()->string("a"), "after") << "A write after a failed one was not kept.";
    EXPECT_EQ(suite()->string("b"), "before") << "A write that returned false changed something.";
    EXPECT_EQ(suite()->value("c"), std::nullopt) << "A write that returned false changed something.";
}

TEST_P(StoresConformance, KeepWhatWasWrittenWhenTheProgramIsKilled) {
    if (!port().sharesStores) GTEST_SKIP() << "The port's stores live as long as its process.";
    platform.reset();
    // The other process ends at once, and nothing is destroyed in it.
    const auto writeAndEnd = [this] {
        const auto other = port().start(folder.path());
        std::_Exit(other->keyValueStores->suite("suite")->set("key", "value") ? 0 : 1);
    };
    EXPECT_EXIT(writeAndEnd(), testing::ExitedWithCode(0), "") << "Another process could not write.";
    platform = port().start(folder.path());
    EXPECT_EQ(suite()->string("key"), "value")
        << "A write returned true, but its value is gone because the process ended right afterwards.";
}

TEST_P(StoresConformance, ShowOtherProgramsWritesAtOnce) {
    if (!port().sharesStores) GTEST_SKIP() << "The port's stores are not shared.";
    const auto other = port().start(folder.path());
    const auto ours = suite();
    const auto theirs = other->keyValueStores->suite("suite");
    for (const std::string value : {"1", "2"}) {
        ours->write({{"key", value}, {"goes", value}});
        EXPECT_EQ(theirs->string("key"), value) << "A read must see the last write of another program.";
        theirs->remove("goes");
        EXPECT_EQ(ours->value("goes"), std::nullopt) << "A read must see what another program has removed.";
    }
}

}  // namespace kavio::test
