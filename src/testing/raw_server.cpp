#include <kavio/testing/raw_server.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <csignal>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace kavio::test {

LoopbackSocket::LoopbackSocket() : mDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    ::setsockopt(mDescriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(mDescriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot have a port");
}

LoopbackSocket::~LoopbackSocket() { ::close(mDescriptor); }

std::string LoopbackSocket::address() const {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(mDescriptor, reinterpret_cast<sockaddr*>(&address), &length);
    return "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

struct RawServer::State {
    State(const Identity& identity, Script theScript, std::string theProtocol);
    void acceptAll();
    void serve(int socket, std::size_t number);

    const Script script;
    std::string protocol;
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context{SSL_CTX_new(TLS_server_method()), &SSL_CTX_free};
    const LoopbackSocket listener;
    std::mutex mutex;
    std::vector<std::string> received;  // guarded by the mutex, as are the requests and the sockets
    std::vector<std::string> requests;
    std::vector<int> sockets;  // by connection; -1 once closed
    std::vector<std::thread> threads;
    std::thread acceptor;
};

struct RawServer::Connection::Tls {
    Tls(SSL_CTX* context, int socket) : own(SSL_new(context), &SSL_free) { SSL_set_fd(own.get(), socket); }
    SSL* get() const { return own.get(); }
    int socket() const { return SSL_get_fd(own.get()); }
    const std::unique_ptr<SSL, decltype(&SSL_free)> own;
};

RawServer::Connection::Connection(State& server, std::size_t number, int socket)
    : mServer(server), mNumber(number), mTls(std::make_unique<Tls>(server.context.get(), socket)) {}
RawServer::Connection::~Connection() = default;

bool RawServer::Connection::handshake() { return SSL_accept(mTls->get()) == 1; }

std::string RawServer::Connection::read(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t end = 0;
    for (std::size_t more = 0; end < count; end += more) {
        if (SSL_read_ex(mTls->get(), bytes.data() + end, count - end, &more) != 1) break;
        const std::lock_guard lock(mServer.mutex);
        mServer.received[mNumber].append(bytes, end, more);
    }
    return bytes.substr(0, end);
}

std::string RawServer::Connection::readRequest() {
    std::string request;
    while (!request.ends_with("\r\n\r\n")) {
        const auto byte = read(1);
        if (byte.empty()) return {};
        request += byte;
    }
    const auto field = request.find("Content-Length: ");
    const std::size_t length = field == std::string::npos ? 0 : std::stoul(request.substr(field + 16));
    const auto body = read(length);
    if (body.size() < length) return {};
    const std::lock_guard lock(mServer.mutex);
    return mServer.requests.emplace_back(request + body);
}

bool RawServer::Connection::send(std::string_view bytes) {
    std::size_t count = 0;
    return SSL_write_ex(mTls->get(), bytes.data(), bytes.size(), &count) == 1;
}

void RawServer::Connection::sayGoodbye(bool hangUp) {
    SSL_shutdown(mTls->get());
    if (hangUp) this->hangUp();
}

void RawServer::Connection::hangUp() { ::shutdown(mTls->socket(), SHUT_WR); }

bool RawServer::Connection::isResumed() { return SSL_session_reused(mTls->get()) == 1; }

bool RawServer::Connection::hearsWithin(std::chrono::milliseconds limit) {
    pollfd socket{mTls->socket(), POLLIN, 0};
    return ::poll(&socket, 1, static_cast<int>(limit.count())) > 0;
}

void RawServer::Connection::stall() {
    char ignored = 0;
    while (::recv(mTls->socket(), &ignored, 1, 0) > 0) {
    }
}

void RawServer::Connection::dripHandshake() {
    // Of a record as long as any may be, nobody can make sense before its end.
    constexpr std::string_view record("\x16\x03\x03\x40\x00", 5);
    pollfd socket{mTls->socket(), POLLRDHUP, 0};
    for (std::size_t sent = 0; ::poll(&socket, 1, 50) == 0; ++sent) {
        const char next = sent < record.size() ? record[sent] : '\0';
        if (::send(mTls->socket(), &next, 1, MSG_NOSIGNAL) != 1) return;
    }
}

RawServer::State::State(const Identity& identity, Script theScript, std::string theProtocol)
    : script(std::move(theScript)), protocol(std::move(theProtocol)) {
    const auto choose = [](SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char*,
                           unsigned int, void* own) {
        const auto& text = *static_cast<const std::string*>(own);
        *chosen = reinterpret_cast<const unsigned char*>(text.data());
        *length = static_cast<unsigned char>(text.size());
        return SSL_TLSEXT_ERR_OK;
    };
    const std::unique_ptr<BIO, decltype(&BIO_free)> pem(
        BIO_new_mem_buf(identity.pem.data(), static_cast<int>(identity.pem.size())), &BIO_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(pem.get(), nullptr, nullptr, nullptr), &X509_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(pem.get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
    if (SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1 || ::listen(listener.descriptor(), SOMAXCONN) != 0)
        throw std::runtime_error("cannot start a TLS server");
    SSL_CTX_set_alpn_select_cb(context.get(), choose, &protocol);
    acceptor = std::thread([this] { acceptAll(); });
}

void RawServer::State::acceptAll() {
    for (int socket = 0; (socket = ::accept4(listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        const std::lock_guard lock(mutex);
        received.emplace_back();
        sockets.push_back(socket);
        threads.emplace_back(&State::serve, this, socket, sockets.size() - 1);
    }
}

void RawServer::State::serve(int socket, std::size_t number) {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);  // from a client that left
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Connection connection(*this, number, socket);
    script(connection);
    const std::lock_guard lock(mutex);
    ::close(std::exchange(sockets[number], -1));
}

RawServer::RawServer(const Identity& identity, Script script, std::string protocol)
    : mState(std::make_unique<State>(identity, std::move(script), std::move(protocol))) {}

RawServer::~RawServer() {
    ::shutdown(mState->listener.descriptor(), SHUT_RDWR);
    mState->acceptor.join();
    {
        const std::lock_guard lock(mState->mutex);
        for (const int socket : mState->sockets) ::shutdown(socket, SHUT_RDWR);
    }
    for (auto& thread : mState->threads) thread.join();
}

std::string RawServer::address() const { return mState->listener.address(); }

std::vector<std::string> RawServer::received() const {
    const std::lock_guard lock(mState->mutex);
    return mState->received;
}

std::vector<std::string> RawServer::requests() const {
    const std::lock_guard lock(mState->mutex);
    return mState->requests;
}

std::string httpReply(int status, std::string_view body, std::string_view headers) {
    return "HTTP/1.1 " + std::to_string(status) + " Status\r\n" + std::string(headers) +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

std::string deflated(std::string_view plain) {
    uLongf size = compressBound(plain.size());
    std::string bytes(size, '\0');
    compress(reinterpret_cast<Bytef*>(bytes.data()), &size, reinterpret_cast<const Bytef*>(plain.data()), plain.size());
    return bytes.substr(0, size);
}

RawServer::Script meeting(std::function<bool(RawServer::Connection&, const std::string& request)> meet) {
    return [meet = std::move(meet)](RawServer::Connection& connection) {
        if (!connection.handshake()) return;
        for (std::string request; !(request = connection.readRequest()).empty();) {
            if (!meet(connection, request)) return;
        }
    };
}

RawServer::Script answering(std::function<std::string(const std::string& request)> answer) {
    return meeting([answer = std::move(answer)](RawServer::Connection& connection, const std::string& request) {
        return connection.send(answer(request));
    });
}
RawServer::Script answering(const std::string& reply) {
    return answering([reply](const std::string&) { return reply; });
}

}  // namespace kavio::test
