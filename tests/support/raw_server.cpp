#include "support/raw_server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace kavio::test {

LoopbackSocket::LoopbackSocket() {
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

RawServer::RawServer(const sandbox::Identity& identity, Script script, std::string protocol)
    : mScript(std::move(script)), mProtocol(std::move(protocol)) {
    const auto choose = [](SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char*,
                           unsigned int, void* own) {
        const auto& text = *static_cast<const std::string*>(own);
        *chosen = reinterpret_cast<const unsigned char*>(text.data());
        *length = static_cast<unsigned char>(text.size());
        return SSL_TLSEXT_ERR_OK;
    };
    if (SSL_CTX_use_certificate(mContext.get(), identity.certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(mContext.get(), identity.key.get()) != 1 ||
        ::listen(mListener.descriptor(), SOMAXCONN) != 0)
        throw std::runtime_error("cannot start a TLS server");
    SSL_CTX_set_alpn_select_cb(mContext.get(), choose, &mProtocol);
    mAcceptor = std::thread([this] { acceptAll(); });
}

RawServer::~RawServer() {
    ::shutdown(mListener.descriptor(), SHUT_RDWR);
    mAcceptor.join();
    {
        const std::lock_guard lock(mMutex);
        for (const int socket : mSockets) ::shutdown(socket, SHUT_RDWR);
    }
    for (auto& thread : mThreads) thread.join();
}

void RawServer::acceptAll() {
    for (int socket = 0; (socket = ::accept4(mListener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        const std::lock_guard lock(mMutex);
        mReceived.emplace_back();
        mSockets.push_back(socket);
        mThreads.emplace_back(&RawServer::serve, this, socket, mSockets.size() - 1);
    }
}

void RawServer::serve(int socket, std::size_t number) {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);  // from a client that left
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Connection connection(*this, number, socket);
    mScript(connection);
    const std::lock_guard lock(mMutex);
    ::close(std::exchange(mSockets[number], -1));
}

}  // namespace kavio::test
