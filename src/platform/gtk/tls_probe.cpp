#include "platform/gtk/tls_probe.h"

#include <utility>

namespace kavio {
namespace {

constexpr guint httpsPort = 443;
constexpr guint patienceInSeconds = 15;

using Done = std::function<void(GTlsCertificate*)>;

void onEvent(GSocketClient*, GSocketClientEvent event, GSocketConnectable*, GIOStream* stream, gpointer authorities) {
    if (event == G_SOCKET_CLIENT_TLS_HANDSHAKING)
        g_tls_connection_set_database(G_TLS_CONNECTION(stream), G_TLS_DATABASE(authorities));
}

void onConnected(GObject* client, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Done> done(static_cast<Done*>(data));
    const ObjectPointer<GSocketConnection> connection(
        g_socket_client_connect_finish(G_SOCKET_CLIENT(client), result, nullptr));
    GIOStream* stream =
        connection ? g_tcp_wrapper_connection_get_base_io_stream(G_TCP_WRAPPER_CONNECTION(connection.get())) : nullptr;
    guarded([&] { (*done)(stream ? g_tls_connection_get_peer_certificate(G_TLS_CONNECTION(stream)) : nullptr); });
}

}  // namespace

void probeCertificate(const char* url, GTlsDatabase* authorities, GCancellable* cancellable, Done done) {
    const ObjectPointer<GSocketClient> client(g_socket_client_new());
    g_socket_client_set_tls(client.get(), TRUE);
    g_socket_client_set_timeout(client.get(), patienceInSeconds);
    g_signal_connect_data(
        client.get(), "event", G_CALLBACK(onEvent), g_object_ref(authorities),
        [](gpointer object, GClosure*) { g_object_unref(object); }, GConnectFlags(0));
    const ObjectPointer<GSocketConnectable> address(g_network_address_parse_uri(url, httpsPort, nullptr));
    if (!address) return done(nullptr);
    g_socket_client_connect_async(client.get(), address.get(), cancellable, onConnected, new Done(std::move(done)));
}

}  // namespace kavio
