#include "listener.h"

#include "http2_server.h"
#include "http2_session.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/socket.h>

#include <ctime>

namespace kavio::sandbox {
namespace {

constexpr int workers = 48;  // an idle connection takes one, and so does a request delayed by a fault
constexpr std::size_t bodyLimit = 1 << 20;

/// The HTTP server assumes that the body of a POST or PUT without a length ends with the connection. In HTTP/1.1 such a
/// request has no body.
httplib::Server::HandlerResponse noLengthIsNoBody(const httplib::Request& request, httplib::Response& /*response*/) {
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
        const_cast<httplib::Request&>(request).headers.emplace("Content-Length", "0");
    return httplib::Server::HandlerResponse::Unhandled;
}

/// For a client that takes Brotli, the HTTP server would use that at its densest, which takes longer than all the rest
/// of an answer.
void compressWithGzip(const httplib::Request& request) {
    auto& headers = const_cast<httplib::Request&>(request).headers;
    const bool isAccepted = request.get_header_value("Accept-Encoding").find("gzip") != std::string::npos;
    headers.erase("Accept-Encoding");
    if (isAccepted) headers.emplace("Accept-Encoding", "gzip");
}

/// Programs that this process starts get none of its sockets.
void keepToOneself(int socket) { fcntl(socket, F_SETFD, FD_CLOEXEC); }

/// The HTTP server's default would share a port with another sandbox, which would then get half of the connections.
void refuseTakenPorts(socket_t socket) {
    const int on = 1;  // ports of connections that have only just ended are not taken
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    keepToOneself(socket);
}

}  // namespace

/// Lives as long as its connection's TLS object, which the HTTP server frees before closing the socket.
struct Connections::Entry {
    Connections& connections;
    int socket;
};

int Connections::entryIndex() {
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, onFree);
    return index;
}

void Connections::watch(SSL_CTX* context) {
    entryIndex();
    SSL_CTX_set_app_data(context, this);
    SSL_CTX_set_info_callback(context, onState);
}

void Connections::onState(const SSL* ssl, int where, int /*result*/) {
    if ((where & SSL_CB_HANDSHAKE_START) == 0 || SSL_get_ex_data(ssl, entryIndex()) != nullptr) return;
    auto& self = *static_cast<Connections*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
    const int socket = SSL_get_fd(ssl);
    keepToOneself(socket);
    SSL_set_ex_data(const_cast<SSL*>(ssl), entryIndex(), new Entry{self, socket});
    const std::lock_guard lock(self.mMutex);
    self.mSockets.insert(socket);
    if (self.mClosed) shutdown(socket, SHUT_RDWR);
}

void Connections::onFree(void* /*parent*/, void* entry, CRYPTO_EX_DATA* /*data*/, int /*index*/, long /*argument*/,
                         void* /*pointer*/) {
    const std::unique_ptr<Entry> ended(static_cast<Entry*>(entry));
    if (!ended) return;
    const std::lock_guard lock(ended->connections.mMutex);
    ended->connections.mSockets.erase(ended->socket);
}

void Connections::close() {
    const std::lock_guard lock(mMutex);
    mClosed = true;
    for (const int socket : mSockets) shutdown(socket, SHUT_RDWR);
}

Listener::Listener(Protocol protocol, const Identity* identity, std::uint16_t port, std::chrono::seconds idleLimit,
                   Handler handler) {
    const auto every = [this, handler](const auto& request, auto& response) {
        handler(*this, request, response);
        compressWithGzip(request);
    };
    mServer = makeServer(protocol, identity, idleLimit, every);
    mServer->new_task_queue = [] { return new httplib::ThreadPool(workers); };
    mServer->set_tcp_nodelay(true);
    mServer->set_socket_options(refuseTakenPorts);
    mServer->set_pre_routing_handler(noLengthIsNoBody);
    mServer->set_payload_max_length(bodyLimit);
    mServer->Get(".*", every).Post(".*", every).Put(".*", every).Patch(".*", every).Delete(".*", every);
    mServer->Options(".*", every);

    const int bound = port == 0 ? mServer->bind_to_any_port("127.0.0.1")
                                : (mServer->bind_to_port("127.0.0.1", port) ? int(port) : -1);
    if (bound <= 0) throw std::runtime_error(fmt::format("cannot listen on 127.0.0.1:{}", port));
    mPort = std::uint16_t(bound);
    mThread = std::thread([this] { mServer->listen_after_bind(); });
    // A stop before the server runs would be lost.
    while (!mServer->is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::unique_ptr<httplib::Server> Listener::makeServer(Protocol protocol, const Identity* identity,
                                                      std::chrono::seconds idleLimit,
                                                      httplib::Server::Handler handler) {
    if (protocol == Protocol::http) {
        auto plain = std::make_unique<httplib::Server>();
        plain->set_keep_alive_max_count(1);  // so that no idle connection keeps a stop waiting
        return plain;
    }
    auto* const certificate = identity->certificate.get();
    auto* const key = identity->key.get();
    auto secure = protocol == Protocol::http2 ? std::make_unique<Http2Server>(certificate, key, idleLimit, handler)
                                              : std::make_unique<httplib::SSLServer>(certificate, key);
    if (!secure->is_valid()) throw std::runtime_error("the server certificate is not usable");
    mConnections.watch(secure->ssl_context());
    secure->set_keep_alive_max_count(1000);
    secure->set_keep_alive_timeout(static_cast<std::time_t>(idleLimit.count()));
    return secure;
}

Listener::~Listener() {
    {
        const std::lock_guard lock(mMutex);
        mStopped = true;
    }
    mResumed.notify_all();
    mServer->stop();
    mConnections.close();
    mThread.join();
}

bool Listener::pause(std::chrono::milliseconds time) {
    std::unique_lock lock(mMutex);
    mResumed.wait_for(lock, time, [this, before = mResumptions] { return mStopped || mResumptions != before; });
    return !mStopped;
}

void Listener::resume() {
    {
        const std::lock_guard lock(mMutex);
        ++mResumptions;
    }
    mResumed.notify_all();
}

bool Listener::drop(const httplib::Request& request) {
    if (request.version == http2Version) return true;
    if (request.ssl == nullptr) return false;
    shutdown(SSL_get_fd(request.ssl), SHUT_RDWR);
    return true;
}

}  // namespace kavio::sandbox
