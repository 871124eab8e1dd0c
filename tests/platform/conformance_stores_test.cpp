#include "platform/conformance.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Stores : public Conformance {
protected:
    std::shared_ptr<KeyValueStore> suite(std::string_view name = "suite") {
        return platform.keyValueStores->suite(name);
    }
};
INSTANTIATE_TEST_SUITE_P(, Stores, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

Date date(double seconds) { return Date(std::chrono::duration<double>(seconds)); }

TEST_P(Stores, KeepEveryValueAsItIs) {
    const auto store = suite();
    const std::vector<StoredValue> values = {
        std::string(),
        std::string("text"),
        std::string("nul\0inside", 10),
        std::string("\xC3\x28 ill-formed"),
        std::string(300'000, 'x'),
        Bytes{},
        Bytes{0, 1, 255},
        date(0),
        date(-1.25),
        date(1e300),
        date(-std::numeric_limits<double>::infinity()),
    };
    for (const auto& value : values) {
        EXPECT_TRUE(store->set("key", value));
        EXPECT_EQ(store->value("key"), value);
    }
    EXPECT_TRUE(store->remove("key"));
    EXPECT_EQ(store->value("key"), std::nullopt);
    EXPECT_TRUE(store->remove("key"));
}

TEST_P(Stores, ReadAValueOfAnotherTypeAsMissing) {
    const auto store = suite();
    store->set("text", "5");
    store->set("date", date(5));
    store->set("data", Bytes{5});
    EXPECT_EQ(store->string("text"), "5");
    EXPECT_EQ(store->date("date"), date(5));
    EXPECT_EQ(store->data("data"), Bytes{5});
    EXPECT_EQ(store->string("date"), std::nullopt);
    EXPECT_EQ(store->date("data"), std::nullopt);
    EXPECT_EQ(store->data("text"), std::nullopt);
    EXPECT_EQ(store->string("missing"), std::nullopt);
}

TEST_P(Stores, TellAnyTwoNamesApart) {
    const std::string cut(127, 'n');
    const std::vector<std::string> names = {"",
                                            "standard",
                                            ".",
                                            "..",
                                            "../up",
                                            "a/b",
                                            "a%2Fb",
                                            "a:b",
                                            "A:b",
                                            std::string("nul\0inside", 10),
                                            "\xF0\x9F\x98\x80",
                                            cut + "end",
                                            cut + "en",
                                            cut + "n%~00",
                                            cut + cut + "1",
                                            cut + cut + "2"};
    std::vector<std::string> wrong;
    for (const auto& name : names) suite(name)->set("name", name);
    platform.keyValueStores->standard()->set("name", "the standard store");
    for (const auto& name : names) {
        if (suite(name)->string("name") != name) wrong.push_back(name);
    }
    EXPECT_THAT(wrong, IsEmpty());
    EXPECT_EQ(suite("never written")->string("name"), std::nullopt);
    EXPECT_EQ(platform.keyValueStores->standard()->string("name"), "the standard store");
}

TEST_P(Stores, GiveTheSameStoreForTheSameName) {
    EXPECT_EQ(suite("one"), suite("one"));
    EXPECT_EQ(platform.keyValueStores->standard(), platform.keyValueStores->standard());
}

TEST_P(Stores, MayBeUsedFromSeveralThreads) {
    const auto store = suite();
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&, key = std::to_string(thread)] {
            for (int i = 0; i < 20; ++i) store->set(key, store->string(key).value_or("") + "x");
        });
    }
    for (auto& thread : threads) thread.join();
    const std::string all(20, 'x');
    EXPECT_THAT((std::vector{store->string("0"), store->string("1"), store->string("2")}), ElementsAre(all, all, all));
}

}  // namespace
}  // namespace kavio::test
