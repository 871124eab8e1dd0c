#include "support/raw_server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

namespace kavio::test {
namespace {

void require(bool succeeded) {
    if (!succeeded) throw std::runtime_error("cannot start a TLS server");
}

/// Takes the server's protocol, whatever the client offers.
int selectProtocol(SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char*, unsigned int,
                   void* protocol) {
    const auto& own = *static_cast<const std::string*>(protocol);
    *chosen = reinterpret_cast<const unsigned char*>(own.data());
    *length = static_cast<unsigned char>(own.size());
    return SSL_TLSEXT_ERR_OK;
}

std::shared_ptr<SSL_CTX> makeContext(const Identity& identity, std::string& protocol) {
    std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    require(context && SSL_CTX_use_certificate(context.get(), identity.certificate.get()) == 1 &&
            SSL_CTX_use_PrivateKey(context.get(), identity.key.get()) == 1);
    SSL_CTX_set_alpn_select_cb(context.get(), &selectProtocol, &protocol);
    return context;
}

int listenOnLoopback() {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(listener >= 0 && ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
            ::listen(listener, SOMAXCONN) == 0);
    return listener;
}

}  // namespace

RawServer::RawServer(const Identity& identity, Script script, std::string protocol)
    : mScript(std::move(script)),
      mProtocol(std::move(protocol)),
      mContext(makeContext(identity, mProtocol)),
      mListener(listenOnLoopback()),
      mAcceptor([this] { acceptAll(); }) {}

RawServer::~RawServer() {
    ::shutdown(mListener, SHUT_RDWR);
    mAcceptor.join();
    {
        const std::lock_guard lock(mMutex);
        for (const int socket : mSockets) ::shutdown(socket, SHUT_RDWR);
    }
    for (auto& thread : mThreads) thread.join();
    ::close(mListener);
}

std::string RawServer::address() const {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(mListener, reinterpret_cast<sockaddr*>(&address), &length);
    return "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

std::vector<std::string> RawServer::received() const {
    const std::lock_guard lock(mMutex);
    return mReceived;
}

std::vector<std::string> RawServer::requests() const {
    const std::lock_guard lock(mMutex);
    return mRequests;
}

void RawServer::acceptAll() {
    for (int socket = 0; (socket = ::accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        const std::lock_guard lock(mMutex);
        mReceived.emplace_back();
        mSockets.push_back(socket);
        mThreads.emplace_back(&RawServer::serve, this, socket, mSockets.size() - 1);
    }
}

void RawServer::serve(int socket, std::size_t number) {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);  // of a client that left
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Connection connection(*this, number);
    SSL_set_fd(connection.mTls.get(), socket);
    mScript(connection);
    const std::lock_guard lock(mMutex);
    ::close(std::exchange(mSockets[number], -1));
}

RawServer::Connection::Connection(RawServer& server, std::size_t number)
    : mServer(server), mNumber(number), mTls(SSL_new(server.mContext.get()), &SSL_free) {}

bool RawServer::Connection::handshake() { return SSL_accept(mTls.get()) == 1; }

std::string RawServer::Connection::read(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t end = 0;
    for (std::size_t more = 0; end < count; end += more) {
        if (SSL_read_ex(mTls.get(), bytes.data() + end, count - end, &more) != 1) break;
        const std::lock_guard lock(mServer.mMutex);
        mServer.mReceived[mNumber].append(bytes, end, more);
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
    const std::lock_guard lock(mServer.mMutex);
    return mServer.mRequests.emplace_back(request + body);
}

bool RawServer::Connection::send(std::string_view bytes) {
    std::size_t count = 0;
    return SSL_write_ex(mTls.get(), bytes.data(), bytes.size(), &count) == 1;
}

bool RawServer::Connection::hearsWithin(std::chrono::milliseconds limit) {
    pollfd socket{SSL_get_fd(mTls.get()), POLLIN, 0};
    return ::poll(&socket, 1, static_cast<int>(limit.count())) > 0;
}

void RawServer::Connection::stall() {
    char ignored = 0;
    while (::recv(SSL_get_fd(mTls.get()), &ignored, 1, 0) > 0) {
    }
}

std::string httpReply(int status, std::string_view body, std::string_view headers) {
    return "HTTP/1.1 " + std::to_string(status) + " Status\r\n" + std::string(headers) +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

RawServer::Script meeting(std::function<bool(RawServer::Connection& connection, const std::string& request)> meet) {
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
