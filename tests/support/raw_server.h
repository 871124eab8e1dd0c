#pragma once

#include "support/certificates.h"

#include <openssl/ssl.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kavio::test {

/// A TLS server on a loopback port of the system's choice that does with each connection what a script says, byte for
/// byte, and notes what it was sent.
class RawServer {
public:
    class Connection;
    /// Called for each connection, on a thread of its own. The connection is closed when it returns.
    using Script = std::function<void(Connection&)>;

    /// `protocol` is the one that the server agrees to by ALPN.
    RawServer(const Identity& identity, Script script, std::string protocol = "http/1.1");
    /// Cuts what is open.
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    /// "127.0.0.1:PORT"
    std::string address() const;
    /// The bytes inside TLS that scripts have read, a text a connection, in the order in which those came.
    std::vector<std::string> received() const;
    /// The whole requests that scripts have read.
    std::vector<std::string> requests() const;

private:
    void acceptAll();
    void serve(int socket, std::size_t number);

    const Script mScript;
    std::string mProtocol;
    std::shared_ptr<SSL_CTX> mContext;
    int mListener;
    mutable std::mutex mMutex;
    std::vector<std::string> mReceived;  // guarded by mMutex, as are the requests and the sockets
    std::vector<std::string> mRequests;
    std::vector<int> mSockets;  // by connection; -1 once closed
    std::vector<std::thread> mThreads;
    std::thread mAcceptor;
};

/// What a script can do. Once the peer has left, reading gives nothing more and sending fails.
class RawServer::Connection {
public:
    /// Counts from 0.
    std::size_t number() const { return mNumber; }
    /// False when the client refuses.
    bool handshake();
    /// `count` bytes; fewer only when the peer leaves before that.
    std::string read(std::size_t count);
    /// Head, and as much body as its "Content-Length" says. Empty when the peer leaves before the end.
    std::string readRequest();
    bool send(std::string_view bytes);
    /// Waits for the peer to leave, or to send more, for no longer than `limit`. False when it does neither.
    bool hearsWithin(std::chrono::milliseconds limit);
    /// Does nothing more until the peer leaves or the server ends.
    void stall();

private:
    friend class RawServer;
    Connection(RawServer& server, std::size_t number);

    RawServer& mServer;
    std::size_t mNumber;
    std::unique_ptr<SSL, decltype(&SSL_free)> mTls;
};

/// A whole reply of HTTP/1.1. Each of `headers` ends with "\r\n".
std::string httpReply(int status, std::string_view body, std::string_view headers = "");

/// After the handshake meets each request of a connection by `meet`, as long as that gives true.
RawServer::Script meeting(std::function<bool(RawServer::Connection& connection, const std::string& request)> meet);

/// Answers all requests of a connection, each by what `answer` makes of its text.
RawServer::Script answering(std::function<std::string(const std::string& request)> answer);
RawServer::Script answering(const std::string& reply);

}  // namespace kavio::test
