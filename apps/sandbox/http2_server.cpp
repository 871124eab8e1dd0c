#include "http2_server.h"

#include "http2_session.h"

#include <fcntl.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>

namespace kavio::sandbox {
namespace {

int refuseNoOffer(SSL* tls, int* alert, void* /*argument*/) {
    const unsigned char* offer = nullptr;
    std::size_t size = 0;
    if (SSL_client_hello_get0_ext(tls, TLSEXT_TYPE_application_layer_protocol_negotiation, &offer, &size) == 1)
        return SSL_CLIENT_HELLO_SUCCESS;
    *alert = SSL_AD_NO_APPLICATION_PROTOCOL;
    return SSL_CLIENT_HELLO_ERROR;
}

int chooseHttp2(SSL* /*tls*/, const unsigned char** chosen, unsigned char* size, const unsigned char* offer,
                unsigned offerSize, void* /*argument*/) {
    static constexpr std::array<unsigned char, 3> http2{2, 'h', '2'};
    const auto result = SSL_select_next_proto(const_cast<unsigned char**>(chosen), size, http2.data(),
                                              unsigned(http2.size()), offer, offerSize);
    return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_ALERT_FATAL;
}

struct Closed {
    ~Closed() { close(file); }
    const int file;
};

class Connection {
public:
    Connection(SSL_CTX* context, int socket, const httplib::Server::Handler& handler)
        : mSocket(socket), mTls(SSL_new(context)), mSession(handler, [this] { eventfd_write(mWake.file, 1); }) {
        if (mWake.file < 0 || !mTls || SSL_set_fd(mTls.get(), socket) != 1) throw std::bad_alloc();
        fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
        SSL_set_mode(mTls.get(), SSL_MODE_ENABLE_PARTIAL_WRITE);
        SSL_set_accept_state(mTls.get());
    }
    void run(std::chrono::milliseconds idleLimit);

private:
    struct Free {
        void operator()(SSL* tls) const { SSL_free(tls); }
    };
    bool receive();
    bool send();
    int outcome(int result);
    bool await(std::chrono::milliseconds idleLimit);

    const int mSocket;
    const Closed mWake{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};  // ends a wait for the socket
    const std::unique_ptr<SSL, Free> mTls;
    short mAwaited = 0;
    std::basic_string_view<std::uint8_t> mUnsent;
    Http2Session mSession;  // last: its threads use the others
};

void Connection::run(std::chrono::milliseconds idleLimit) {
    for (mAwaited = POLLIN; receive() && send(); mAwaited = POLLIN) {
        if (await(idleLimit)) continue;
        mSession.leave();
        send();
        break;
    }
    SSL_shutdown(mTls.get());
    shutdown(mSocket, SHUT_RDWR);  // now, whatever the session still waits for
}

bool Connection::receive() {
    std::array<std::uint8_t, 16 << 10> bytes;
    for (;;) {
        ERR_clear_error();  // such as that of the thread's last connection
        const int size = outcome(SSL_read(mTls.get(), bytes.data(), int(bytes.size())));
        if (size <= 0) return size == 0;
        if (!mSession.receive(bytes.data(), std::size_t(size))) return false;
    }
}

bool Connection::send() {
    for (;;) {
        if (mUnsent.empty()) mUnsent = mSession.toSend();
        if (mUnsent.empty()) return !mSession.isOver();
        ERR_clear_error();
        const int size = outcome(SSL_write(mTls.get(), mUnsent.data(), int(mUnsent.size())));
        if (size <= 0) return size == 0;
        mUnsent.remove_prefix(std::size_t(size));
    }
}

/// How many bytes were read or written; 0 if that must wait, -1 if the connection has ended.
int Connection::outcome(int result) {
    if (result > 0) return result;
    const int error = SSL_get_error(mTls.get(), result);
    if (error == SSL_ERROR_WANT_WRITE) mAwaited |= POLLOUT;
    return error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE ? 0 : -1;
}

/// False if nothing has happened for too long.
bool Connection::await(std::chrono::milliseconds idleLimit) {
    std::array<pollfd, 2> files{{{mSocket, mAwaited, 0}, {mWake.file, POLLIN, 0}}};
    const int ready = poll(files.data(), files.size(), int(idleLimit.count()));
    eventfd_t count = 0;
    eventfd_read(mWake.file, &count);
    return ready != 0 || mSession.isBusy();
}

}  // namespace

Http2Server::Http2Server(X509* certificate, EVP_PKEY* key, std::chrono::milliseconds idleLimit, Handler handler)
    : SSLServer(certificate, key), mIdleLimit(idleLimit), mHandler(std::move(handler)) {
    if (!is_valid()) return;
    SSL_CTX_set_min_proto_version(ssl_context(), TLS1_2_VERSION);
    SSL_CTX_set_client_hello_cb(ssl_context(), refuseNoOffer, nullptr);
    SSL_CTX_set_alpn_select_cb(ssl_context(), chooseHttp2, nullptr);
}

bool Http2Server::process_and_close_socket(socket_t socket) {
    try {
        Connection(ssl_context(), socket, mHandler).run(mIdleLimit);
    } catch (const std::exception&) {
        // There was no memory or no file for it.
    }
    close(socket);
    return true;
}

}  // namespace kavio::sandbox
