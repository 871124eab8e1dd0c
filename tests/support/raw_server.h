#pragma once

#include "sandbox/authority.h"

#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace kavio::test {

/// A socket bound to a loopback port of the system's choice, which nobody else is given while this lives. Anybody who
/// asks for that port by number may listen there.
class LoopbackSocket {
public:
    LoopbackSocket();
    ~LoopbackSocket();
    LoopbackSocket(const LoopbackSocket&) = delete;
    LoopbackSocket& operator=(const LoopbackSocket&) = delete;

    int descriptor() const { return mDescriptor; }
    /// "127.0.0.1:PORT"
    std::string address() const;

private:
    const int mDescriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

/// A TLS server on a loopback port of the system's choice. It treats each connection as a script says, byte for byte,
/// and records what it receives.
class RawServer {
public:
    /// What a script can do. Once the peer has left, reading gives nothing more and sending fails.
    class Connection {
    public:
        Connection(RawServer& server, std::size_t number, int socket)
            : mServer(server), mNumber(number), mTls(SSL_new(server.mContext.get()), &SSL_free) {
            SSL_set_fd(mTls.get(), socket);
        }
        /// Counts from 0.
        std::size_t number() const { return mNumber; }
        /// False if the client refuses.
        bool handshake() { return SSL_accept(mTls.get()) == 1; }
        /// Returns `count` bytes; fewer only if the peer leaves before that.
        std::string read(std::size_t count) {
            std::string bytes(count, '\0');
            std::size_t end = 0;
            for (std::size_t more = 0; end < count; end += more) {
                if (SSL_read_ex(mTls.get(), bytes.data() + end, count - end, &more) != 1) break;
                const std::lock_guard lock(mServer.mMutex);
                mServer.mReceived[mNumber].append(bytes, end, more);
            }
            return bytes.substr(0, end);
        }
        /// Returns the head, and as much body as its "Content-Length" says; nothing if the peer leaves before the end.
        std::string readRequest() {
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
        bool send(std::string_view bytes) {
            std::size_t count = 0;
            return SSL_write_ex(mTls.get(), bytes.data(), bytes.size(), &count) == 1;
        }
        /// Ends TLS properly and, if `hangUp`, the connection too.
        void sayGoodbye(bool hangUp) {
            SSL_shutdown(mTls.get());
            if (hangUp) this->hangUp();
        }
        /// Ends our half of the connection.
        void hangUp() { ::shutdown(SSL_get_fd(mTls.get()), SHUT_WR); }
        /// Whether the handshake resumed an earlier TLS session.
        bool isResumed() { return SSL_session_reused(mTls.get()) == 1; }
        /// Waits up to `limit` for the peer to leave or to send more. False if it does neither.
        bool hearsWithin(std::chrono::milliseconds limit) {
            pollfd socket{SSL_get_fd(mTls.get()), POLLIN, 0};
            return ::poll(&socket, 1, static_cast<int>(limit.count())) > 0;
        }
        /// Does nothing more until the peer leaves or the server ends.
        void stall() {
            char ignored = 0;
            while (::recv(SSL_get_fd(mTls.get()), &ignored, 1, 0) > 0) {
            }
        }

    private:
        RawServer& mServer;
        std::size_t mNumber;
        std::unique_ptr<SSL, decltype(&SSL_free)> mTls;
    };

    /// Called for each connection, on a separate thread. The connection is closed when it returns.
    using Script = std::function<void(Connection&)>;

    /// `protocol` is the one that the server takes by ALPN, whatever the client offers.
    RawServer(const sandbox::Identity& identity, Script script, std::string protocol = "http/1.1");
    /// Cuts open connections.
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    /// "127.0.0.1:PORT"
    std::string address() const { return mListener.address(); }
    /// The bytes inside TLS that scripts have read: one text per connection, in the order in which the
    /// connections came.
    std::vector<std::string> received() const {
        const std::lock_guard lock(mMutex);
        return mReceived;
    }
    /// The whole requests that scripts have read.
    std::vector<std::string> requests() const {
        const std::lock_guard lock(mMutex);
        return mRequests;
    }

private:
    void acceptAll();
    void serve(int socket, std::size_t number);

    const Script mScript;
    std::string mProtocol;
    const std::shared_ptr<SSL_CTX> mContext{SSL_CTX_new(TLS_server_method()), &SSL_CTX_free};
    const LoopbackSocket mListener;
    mutable std::mutex mMutex;
    std::vector<std::string> mReceived;  // guarded by mMutex, as are the requests and the sockets
    std::vector<std::string> mRequests;
    std::vector<int> mSockets;  // by connection; -1 once closed
    std::vector<std::thread> mThreads;
    std::thread mAcceptor;
};

/// A whole HTTP/1.1 reply. Each of `headers` ends with "\r\n".
inline std::string httpReply(int status, std::string_view body, std::string_view headers = "") {
    return "HTTP/1.1 " + std::to_string(status) + " Status\r\n" + std::string(headers) +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

/// After the handshake, passes each request of a connection to `meet`, for as long as that returns true.
inline RawServer::Script meeting(std::function<bool(RawServer::Connection&, const std::string& request)> meet) {
    return [meet = std::move(meet)](RawServer::Connection& connection) {
        if (!connection.handshake()) return;
        for (std::string request; !(request = connection.readRequest()).empty();) {
            if (!meet(connection, request)) return;
        }
    };
}

/// Answers all requests of a connection, each with what `answer` makes of its text.
inline RawServer::Script answering(std::function<std::string(const std::string& request)> answer) {
    return meeting([answer = std::move(answer)](RawServer::Connection& connection, const std::string& request) {
        return connection.send(answer(request));
    });
}
inline RawServer::Script answering(const std::string& reply) {
    return answering([reply](const std::string&) { return reply; });
}

}  // namespace kavio::test
