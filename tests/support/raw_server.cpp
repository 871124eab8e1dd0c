#include "support/raw_server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/pem.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace kavio::test {
namespace {

void require(bool succeeded) {
    if (!succeeded) throw std::runtime_error("cannot start a TLS server");
}

int selectProtocol(SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char* offered,
                   unsigned int offeredLength, void* protocol) {
    const auto& own = *static_cast<const std::string*>(protocol);
    const std::string list = static_cast<char>(own.size()) + own;
    unsigned char* found = nullptr;
    // `chosen` must outlive this call: what is found in the client's offer does.
    const int result = SSL_select_next_proto(&found, length, reinterpret_cast<const unsigned char*>(offered),
                                             offeredLength, reinterpret_cast<const unsigned char*>(list.data()),
                                             static_cast<unsigned int>(list.size()));
    *chosen = found;
    return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_NOACK;
}

std::shared_ptr<SSL_CTX> makeContext(const Identity& identity, std::string& protocol) {
    std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    const auto open = [](const std::string& text) {
        return std::unique_ptr<BIO, decltype(&BIO_free)>(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())),
                                                         &BIO_free);
    };
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(open(identity.certificate).get(), nullptr, nullptr, nullptr), &X509_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(open(identity.key).get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
    require(context && SSL_CTX_use_certificate(context.get(), certificate.get()) == 1 &&
            SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1);
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

/// Of head and body together; 0 while the head is not whole.
std::size_t requestLength(const std::string& text) {
    const auto head = text.find("\r\n\r\n");
    if (head == std::string::npos) return 0;
    const auto field = text.find("Content-Length: ");
    return head + 4 + (field < head ? std::strtoul(text.c_str() + field + 16, nullptr, 10) : 0);
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
    for (;;) {
        const int socket = ::accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) return;
        const std::lock_guard lock(mMutex);
        mReceived.emplace_back();
        mSockets.push_back(socket);
        mThreads.emplace_back([this, socket, number = mSockets.size() - 1] { serve(socket, number); });
    }
}

void RawServer::serve(int socket, std::size_t number) {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);  // of a client that left
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    {
        Connection connection(*this, socket, number);
        mScript(connection);
    }
    const std::lock_guard lock(mMutex);
    ::close(std::exchange(mSockets[number], -1));
}

RawServer::Connection::Connection(RawServer& server, int socket, std::size_t number)
    : mServer(server), mNumber(number), mTls(SSL_new(server.mContext.get()), &SSL_free) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    SSL_set_fd(mTls.get(), socket);
}

bool RawServer::Connection::handshake() { return SSL_accept(mTls.get()) == 1; }

std::string RawServer::Connection::readSome(std::size_t maximum) {
    std::string bytes(maximum, '\0');
    std::size_t count = 0;
    if (SSL_read_ex(mTls.get(), bytes.data(), bytes.size(), &count) != 1) count = 0;
    bytes.resize(count);
    const std::lock_guard lock(mServer.mMutex);
    mServer.mReceived[mNumber] += bytes;
    return bytes;
}

std::string RawServer::Connection::read(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
        const std::string more = readSome(count - bytes.size());
        if (more.empty()) break;
        bytes += more;
    }
    return bytes;
}

std::string RawServer::Connection::readRequest() {
    std::string request;
    while (requestLength(request) == 0 || request.size() < requestLength(request)) {
        const std::string more = readSome(16'384);
        if (more.empty()) return {};
        request += more;
    }
    const std::lock_guard lock(mServer.mMutex);
    mServer.mRequests.push_back(request);
    return request;
}

bool RawServer::Connection::send(std::string_view bytes) {
    std::size_t count = 0;
    return SSL_write_ex(mTls.get(), bytes.data(), bytes.size(), &count) == 1;
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

RawServer::Script answering(std::function<std::string(const std::string& request)> answer) {
    return [answer = std::move(answer)](RawServer::Connection& connection) {
        if (!connection.handshake()) return;
        for (std::string request; !(request = connection.readRequest()).empty();) {
            if (!connection.send(answer(request))) return;
        }
    };
}

}  // namespace kavio::test
