#include "position.h"

#include "command_line/translation.h"

#include <geoclue.h>

#include <memory>
#include <utility>

namespace kavio::device {

namespace {

constexpr auto* service = "org.freedesktop.GeoClue2";
/// How long a receiver for satellites may take in a street, in seconds.
constexpr guint longest = 30;

struct Watch {
    std::function<void()> isThere;
    guint id = 0;
};

void noteService(GDBusConnection*, const char*, const char*, gpointer data) {
    auto* const watch = static_cast<Watch*>(data);
    g_bus_unwatch_name(watch->id);
    watch->isThere();
}

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(GError* error) const { g_error_free(error); }
};
using Error = std::unique_ptr<GError, Unref>;

/// Lives until it is answered. Whatever it still waits for then is cancelled, and must not touch it any more.
struct Question {
    ~Question() {
        g_cancellable_cancel(waiting.get());
        if (client) g_signal_handlers_disconnect_by_data(client.get(), this);
        if (alarm != 0) g_source_remove(alarm);
    }

    std::function<void(std::optional<Position>, std::string)> then;
    std::unique_ptr<GCancellable, Unref> waiting{g_cancellable_new()};
    std::unique_ptr<GClueClient, Unref> client{};  // deleted by the service, too, once nobody refers to it
    guint alarm = 0;
};

void answer(gpointer data, std::optional<Position> position, const std::string& problem) {
    const auto then = std::move(std::unique_ptr<Question>(static_cast<Question*>(data))->then);
    then(position, problem);
}

void answer(gpointer data, const Error& error) {
    if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) return;
    if (g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) != FALSE)
        return answer(data, {},
                      tr("This device does not reveal its location. You can allow that in its privacy settings."));
    g_dbus_error_strip_remote_error(error.get());
    answer(data, {}, tr("This device cannot tell where it is: {}", error->message));
}

gboolean giveUp(gpointer data) {
    static_cast<Question*>(data)->alarm = 0;
    answer(data, {}, tr("This device could not find out where it is."));
    return G_SOURCE_REMOVE;
}

void takeLocation(GObject*, GAsyncResult* result, gpointer data) {
    GError* problem = nullptr;
    const std::unique_ptr<GClueLocation, Unref> location{gclue_location_proxy_new_for_bus_finish(result, &problem)};
    const Error error{problem};
    if (!location) return answer(data, error);
    answer(data, Position{gclue_location_get_latitude(location.get()), gclue_location_get_longitude(location.get())},
           {});
}

void readLocation(GClueClient*, const char*, const char* path, gpointer data) {
    gclue_location_proxy_new_for_bus(G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, service, path,
                                     static_cast<Question*>(data)->waiting.get(), takeLocation, data);
}

void noteStart(GObject* client, GAsyncResult* result, gpointer data) {
    GError* problem = nullptr;
    gclue_client_call_start_finish(GCLUE_CLIENT(client), result, &problem);
    const Error error{problem};
    if (error) answer(data, error);
}

void start(GObject*, GAsyncResult* result, gpointer data) {
    GError* problem = nullptr;
    auto* const client = gclue_client_proxy_create_full_finish(result, &problem);
    const Error error{problem};
    if (client == nullptr) return answer(data, error);
    auto* const question = static_cast<Question*>(data);
    question->client.reset(client);
    g_signal_connect(client, "location-updated", G_CALLBACK(readLocation), data);
    gclue_client_call_start(client, question->waiting.get(), noteStart, data);
}

}  // namespace

void whenPositionIsThere(std::function<void()> isThere) {
    auto* const data = new Watch{std::move(isThere)};
    data->id = g_bus_watch_name(G_BUS_TYPE_SYSTEM, service, G_BUS_NAME_WATCHER_FLAGS_AUTO_START, noteService, nullptr,
                                data, [](gpointer done) { delete static_cast<Watch*>(done); });
}

void askPosition(std::function<void(std::optional<Position>, std::string problem)> then) {
    auto* const question = new Question{std::move(then)};
    question->alarm = g_timeout_add_seconds(longest, giveUp, question);
    gclue_client_proxy_create_full("example.kavio.Wallet", GCLUE_ACCURACY_LEVEL_EXACT,
                                   GCLUE_CLIENT_PROXY_CREATE_AUTO_DELETE, question->waiting.get(), start, question);
}

}  // namespace kavio::device
