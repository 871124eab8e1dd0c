#include "platform/gtk/tls_probe.h"

#include <utility>

namespace kavio {
namespace {

constexpr guint httpsPort = 443;

void onEvent(GSocketClient*, GSocketClientEvent event, GSocketConnectable*, GIOStream* stream, gpointer authorities) {
    if (event == G_SOCKET_CLIENT_TLS_HANDSHAKING)
        g_tls_connection_set_database(G_TLS_CONNECTION(stream), G_TLS_DATABASE(authorities));
}

}  // namespace

CertificateProbe::CertificateProbe(const char* url, GTlsDatabase* authorities, std::chrono::seconds limit, Done done)
    : mDone(std::move(done)), mCancellable(g_cancellable_new()) {
    const ObjectPointer<GSocketClient> client(g_socket_client_new());
    g_socket_client_set_tls(client.get(), TRUE);
    g_signal_connect_data(
        client.get(), "event", G_CALLBACK(onEvent), g_object_ref(authorities),
        [](gpointer object, GClosure*) { g_object_unref(object); }, GConnectFlags(0));
    g_socket_client_connect_to_uri_async(client.get(), url, httpsPort, mCancellable.get(), onConnected, this);
    // The client's own limit is for each single step, so a server that sends a byte now and then would never reach it.
    mLimit = g_timeout_add_seconds(
        static_cast<guint>(limit.count()),
        [](gpointer self) -> gboolean {
            static_cast<CertificateProbe*>(self)->mLimit = 0;
            static_cast<CertificateProbe*>(self)->answer(nullptr);
            return G_SOURCE_REMOVE;
        },
        this);
}

CertificateProbe::~CertificateProbe() { stop(); }

void CertificateProbe::onConnected(GObject* client, GAsyncResult* result, gpointer self) {
    GError* error = nullptr;
    const ObjectPointer<GSocketConnection> connection(
        g_socket_client_connect_to_uri_finish(G_SOCKET_CLIENT(client), result, &error));
    const bool isStopped = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
    g_clear_error(&error);
    if (isStopped) return;  // and perhaps gone
    GIOStream* stream =
        connection ? g_tcp_wrapper_connection_get_base_io_stream(G_TCP_WRAPPER_CONNECTION(connection.get())) : nullptr;
    static_cast<CertificateProbe*>(self)->answer(
        stream ? g_tls_connection_get_peer_certificate(G_TLS_CONNECTION(stream)) : nullptr);
}

void CertificateProbe::answer(GTlsCertificate* certificate) {
    stop();
    const auto done = std::exchange(mDone, nullptr);
    guarded([&] { done(certificate); });  // which may destroy this
}

void CertificateProbe::stop() {
    g_clear_handle_id(&mLimit, g_source_remove);
    g_cancellable_cancel(mCancellable.get());
}

}  // namespace kavio
