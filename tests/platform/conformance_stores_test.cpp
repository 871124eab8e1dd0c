#include "platform/conformance.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

class Stores : public Conformance {
protected:
    std::shared_ptr<KeyValueStore> suite(std::string_view name = "suite") {
        return platform.keyValueStores->suite(name);
    }
};
INSTANTIATE_TEST_SUITE_P(, Stores, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

Date date(double seconds) { return Date(std::chrono::duration<double>(seconds)); }

TEST_P(Stores, KeepEveryValueAsItIsAndReadItAsNoOtherType) {
    const auto store = suite();
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
        EXPECT_TRUE(store->set("key", value));
        EXPECT_EQ(store->value("key"), value);
        EXPECT_EQ(store->string("key").has_value(), std::holds_alternative<std::string>(value));
        EXPECT_EQ(store->data("key").has_value(), std::holds_alternative<Bytes>(value));
        EXPECT_EQ(store->date("key").has_value(), std::holds_alternative<Date>(value));
    }
    for (int times = 0; times < 2; ++times) EXPECT_TRUE(store->remove("key"));
    EXPECT_EQ(store->value("key"), std::nullopt);
}

TEST_P(Stores, TellAnyTwoNamesApart) {
    const std::string cut(127, 'n');
    std::vector<std::string> names{"", "standard", "..", "../up", "a/b", "a%2Fb", "a:b", "A:b"};
    names.emplace_back("nul\0inside", 10);
    for (const auto* end : {"en", "n%~00", "much longer 1", "much longer 2"}) names.push_back(cut + end);
    std::vector<std::string> found;
    for (const auto& name : names) suite(name)->set("name", name);
    platform.keyValueStores->standard()->set("name", "the standard store");
    for (const auto& name : names) found.push_back(suite(name)->string("name").value_or("none"));
    EXPECT_EQ(found, names);
    EXPECT_EQ(suite("never written")->string("name"), std::nullopt);
    EXPECT_EQ(platform.keyValueStores->standard()->string("name"), "the standard store");
}

TEST_P(Stores, MayBeUsedFromSeveralThreads) {
    const auto store = suite();
    std::vector<std::thread> threads;
    for (const auto* key : {"1", "2", "3"}) {
        threads.emplace_back([=] {
            for (int i = 0; i < 20; ++i) store->set(key, store->string(key).value_or("") + "x");
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto* key : {"1", "2", "3"}) EXPECT_EQ(store->string(key), std::string(20, 'x'));
}

}  // namespace
}  // namespace kavio::test
