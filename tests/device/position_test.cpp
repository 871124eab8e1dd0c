#include "device/position.h"

#include "main_thread.h"

#include <gio/gio.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

namespace kavio::device {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto* interfaces = R"(<node>
  <interface name="org.freedesktop.GeoClue2.Manager">
    <method name="GetClient"><arg direction="out" type="o"/></method>
    <method name="DeleteClient"><arg direction="in" type="o"/></method>
  </interface>
  <interface name="org.freedesktop.GeoClue2.Client">
    <property name="DesktopId" type="s" access="readwrite"/>
    <property name="RequestedAccuracyLevel" type="u" access="readwrite"/>
    <method name="Start"/>
    <signal name="LocationUpdated"><arg type="o"/><arg type="o"/></signal>
  </interface>
  <interface name="org.freedesktop.GeoClue2.Location">
    <property name="Latitude" type="d" access="read"/>
    <property name="Longitude" type="d" access="read"/>
  </interface>
</node>)";

/// The service that knows the position, as far as its clients can tell, on the system bus of this program.
class Service {
public:
    Service(Journal& journal, bool isAllowed) : mJournal(journal), mIsAllowed(isAllowed) {
        const GDBusInterfaceVTable methods{call, get, set, {}};
        auto* const described = g_dbus_node_info_new_for_xml(interfaces, nullptr);
        for (auto** interface = described->interfaces; *interface != nullptr; ++interface) {
            auto path = '/' + std::string((*interface)->name);
            std::ranges::replace(path, '.', '/');
            g_dbus_connection_register_object(mBus, path.c_str(), *interface, &methods, this, nullptr, nullptr);
        }
        g_dbus_node_info_unref(described);
        const auto note = [](GDBusConnection*, const char*, gpointer isThere) { *static_cast<bool*>(isThere) = true; };
        mName = g_bus_own_name_on_connection(mBus, "org.freedesktop.GeoClue2", {}, note, nullptr, &mIsThere, nullptr);
        runUntil([this] { return mIsThere; });
    }

    ~Service() {
        g_bus_unown_name(mName);
        g_dbus_connection_close_sync(mBus, nullptr, nullptr);
        g_object_unref(mBus);
    }

private:
    static void call(GDBusConnection* bus, const char* sender, const char* path, const char*, const char* method,
                     GVariant*, GDBusMethodInvocation* invocation, gpointer data) {
        auto* const service = static_cast<Service*>(data);
        service->mJournal.emplace_back(method);
        if (method == std::string("GetClient"))
            return g_dbus_method_invocation_return_value(invocation,
                                                         g_variant_new("(o)", "/org/freedesktop/GeoClue2/Client"));
        if (method == std::string("Start") && !service->mIsAllowed)
            return g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.AccessDenied",
                                                              "no");
        g_dbus_method_invocation_return_value(invocation, nullptr);
        if (method != std::string("Start")) return;
        g_dbus_connection_emit_signal(bus, sender, path, "org.freedesktop.GeoClue2.Client", "LocationUpdated",
                                      g_variant_new("(oo)", "/", "/org/freedesktop/GeoClue2/Location"), nullptr);
    }

    static GVariant* get(GDBusConnection*, const char*, const char*, const char*, const char* property, GError**,
                         gpointer) {
        if (property == std::string("Latitude")) return g_variant_new_double(52.5219);
        if (property == std::string("Longitude")) return g_variant_new_double(-13.4132);
        return property == std::string("DesktopId") ? g_variant_new_string("") : g_variant_new_uint32(0);
    }

    static gboolean set(GDBusConnection*, const char*, const char*, const char*, const char* property, GVariant* value,
                        GError**, gpointer data) {
        if (property == std::string("DesktopId"))
            static_cast<Service*>(data)->mJournal.push_back(g_variant_get_string(value, nullptr));
        return TRUE;
    }

    Journal& mJournal;
    const bool mIsAllowed;
    bool mIsThere = false;
    guint mName = 0;
    GDBusConnection* const mBus =
        g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SYSTEM_BUS_ADDRESS"),
                                               GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                    G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                                               nullptr, nullptr, nullptr);
};

class PositionTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        bus = g_test_dbus_new(G_TEST_DBUS_NONE);
        g_test_dbus_up(bus);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", g_test_dbus_get_bus_address(bus), 1);
        // Whoever is on the system's own bus may end with it.
        g_dbus_connection_set_exit_on_close(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr), FALSE);
    }
    static void TearDownTestSuite() {
        g_test_dbus_down(bus);
        g_object_unref(bus);
    }

    void ask() {
        bool isAnswered = false;
        askPosition([&](std::optional<Position> position, std::string problem) {
            isAnswered = true;
            journal.push_back(position ? std::to_string(position->latitude) + ' ' + std::to_string(position->longitude)
                                       : problem);
        });
        runUntil([&] { return isAnswered; });
    }

    static inline GTestDBus* bus = nullptr;
    Journal journal;
};

TEST_F(PositionTest, IsThereOnceTheServiceIs) {
    whenPositionIsThere([&] { journal.emplace_back("there"); });
    journal.emplace_back("service");
    const auto hasTold = [&] { return journal.back() == "there"; };
    {
        const Service service(journal, true);
        runUntil(hasTold);
    }
    const Service again(journal, true);
    ask();
    EXPECT_THAT(journal,
                ElementsAre("service", "there", "GetClient", "example.kavio.Wallet", "Start", "52.521900 -13.413200"));
    runUntil([&] { return journal.back() == "DeleteClient"; });
}

TEST_F(PositionTest, IsNotToldWhereItIsNotAllowed) {
    const Service service(journal, false);
    ask();
    runUntil([&] { return journal.back() == "DeleteClient"; });
    EXPECT_THAT(journal,
                ElementsAre("GetClient", "example.kavio.Wallet", "Start",
                            "This device does not reveal its location. You can allow that in its privacy settings.",
                            "DeleteClient"));
}

TEST_F(PositionTest, IsNotToldWithoutAService) {
    ask();
    EXPECT_THAT(journal,
                ElementsAre(HasSubstr("This device cannot tell where it is: The name org.freedesktop.GeoClue2")));
}

}  // namespace
}  // namespace kavio::device
