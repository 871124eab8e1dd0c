#include "storage/kavio_user_defaults.h"

#include "platform/linux/memory_store.h"
#include "storage/retaining_store.h"
#include "util/shared_instance.h"

#include <kavio/testing/device.h>

#include <gmock/gmock.h>

#include <cmath>

namespace kavio::test {
namespace {

using testing::ElementsAre;

const Date someDay{std::chrono::seconds(1600000000)};

/// The store of a device in a box; nothing is open yet.
class UserDefaults : public testing::Test {
protected:
    Device mDevice;
};

TEST_F(UserDefaults, AreInTheSuiteThatTheHostsKeyNames) {
    KavioUserDefaults::shared();
    forgetSharedInstances();
    mDevice.mainBundle().information = {{"KavioKey", std::string("abc")}};
    KavioUserDefaults::shared();
    EXPECT_THAT(mDevice.stores().names(),
                ElementsAre("suite group.KavioSdkUserDefaults-KavioE", "suite group.KavioSdkUserDefaults-abc"));
}

TEST_F(UserDefaults, AreInTheStandardStoreWhereNoSuiteCanBeHad) {
    mDevice.stores().refuseSuites();
    KavioUserDefaults::shared()->defualt->set("session_token", std::string("t"));
    EXPECT_THAT(mDevice.stores().names(), ElementsAre("standard"));
    EXPECT_EQ(mDevice.stores().standard()->string("session_token"), "t");
}

// A key, token or service of an earlier run must not come back because the disk is full.
TEST_F(UserDefaults, CountInThisProcessWhenTheyCannotBeWritten) {
    const auto suite = mDevice.stores().suite("group.KavioSdkUserDefaults-KavioE");
    suite->write({{"api_key", "old"}, {"session_token", "t"}, {"server_expired_time", someDay}});
    mDevice.stores().refuseWrites();

    const auto defaults = KavioUserDefaults::shared();
    EXPECT_FALSE(defaults->defualt->set("api_key", std::string("new")));
    EXPECT_FALSE(defaults->defualt->set("session_token", std::string()));
    defaults->setServerExpiredTime(std::nullopt);
    EXPECT_EQ(defaults->defualt->string("api_key"), "new");
    EXPECT_EQ(defaults->sessionToken(), "");
    EXPECT_EQ(defaults->getServerExpiredTime(), std::nullopt);
    EXPECT_EQ(suite->string("api_key"), "old");

    mDevice.stores().refuseWrites(false);
    EXPECT_FALSE(defaults->defualt->set("push_token", Date(Date::duration(std::nan("")))));
    EXPECT_TRUE(defaults->defualt->set("push_token", std::string("p"))) << "takes along what is waiting";
    EXPECT_EQ(suite->string("api_key"), "new");
    EXPECT_EQ(suite->string("session_token"), "");
    EXPECT_EQ(suite->date("server_expired_time"), std::nullopt);
    suite->set("api_key", std::string("of another process"));
    EXPECT_EQ(defaults->defualt->string("api_key"), "of another process");
}

/// A suite in which something else happens just before a write takes effect.
struct InterruptedSuite final : KeyValueStore {
    std::optional<StoredValue> value(std::string_view key) const override { return values.value(key); }
    std::vector<std::string> keys() const override { return values.keys(); }
    bool write(const StoreChanges& changes) override {
        if (const auto now = std::exchange(before, nullptr)) now();
        return !refuses && values.write(changes);
    }
    std::function<void()> before;
    bool refuses = false;
    MemoryStore values{};
};

TEST(RetainingStores, PutNoOldValueOverANewerOne) {
    const auto suite = std::make_shared<InterruptedSuite>();
    RetainingStore store(suite);
    suite->refuses = true;
    store.set("token", std::string("old"));
    EXPECT_FALSE(store.isKept());
    suite->refuses = false;
    suite->before = [&] { store.set("token", std::string("new")); };
    EXPECT_TRUE(store.set("key", std::string("k")) && store.isKept()) << "takes the old token along";
    EXPECT_EQ(suite->string("token"), "new");
    EXPECT_EQ(suite->string("key"), "k");
    suite->set("token", std::string("of another process"));
    EXPECT_EQ(store.string("token"), "of another process") << "nothing is left to write";
}

}  // namespace
}  // namespace kavio::test
