#pragma once

#include <kavio/export.h>
#include <kavio/testing/authority.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// A socket bound to a loopback port of the system's choice, which nobody else is given while this lives. Anybody who
/// asks for that port by number may listen there.
class KAVIO_API LoopbackSocket {
public:
    LoopbackSocket();
    ~LoopbackSocket();
    LoopbackSocket(const LoopbackSocket&) = delete;
    LoopbackSocket& operator=(const LoopbackSocket&) = delete;

    /// The socket's own, which this object closes.
    int descriptor() const { return mDescriptor; }
    /// "127.0.0.1:PORT"
    std::string address() const;

private:
    const int mDescriptor;
};

/// A TLS server on a loopback port of the system's choice. It treats each connection as a script says, byte for byte,
/// and records what it receives.
class KAVIO_API RawServer {
    struct State;

public:
    /// What a script can do. Once the peer has left, reading gives nothing more and sending fails.
    class KAVIO_API Connection {
    public:
        /// For `RawServer` itself.
        Connection(State& server, std::size_t number, int socket);
        ~Connection();
        Connection(const Connection&) = delete;
        Connection& operator=(const Connection&) = delete;

        /// Counts from 0.
        std::size_t number() const { return mNumber; }
        /// False if the client refuses.
        bool handshake();
        /// Returns `count` bytes; fewer only if the peer leaves before that.
        std::string read(std::size_t count);
        /// Returns the head, and as much body as its "Content-Length" says; nothing if the peer leaves before the end.
        std::string readRequest();
        /// False if the peer has left.
        bool send(std::string_view bytes);
        /// Ends TLS properly and, if `hangUp`, the connection too.
        void sayGoodbye(bool hangUp);
        /// Ends our half of the connection.
        void hangUp();
        /// Whether the handshake resumed an earlier TLS session.
        bool isResumed();
        /// Waits up to `limit` for the peer to leave or to send more. False if it does neither.
        bool hearsWithin(std::chrono::milliseconds limit);
        /// Does nothing more until the peer leaves or the server ends.
        void stall();
        /// Begins to answer a handshake, but sends only a byte now and then, until the peer leaves or the server ends.
        void dripHandshake();

    private:
        struct Tls;
        State& mServer;
        const std::size_t mNumber;
        const std::unique_ptr<Tls> mTls;
    };

    /// Called for each connection, on a separate thread. The connection is closed when it returns.
    using Script = std::function<void(Connection&)>;

    /// `protocol` is the one that the server takes by ALPN, whatever the client offers.
    RawServer(const Identity& identity, Script script, std::string protocol = "http/1.1");
    /// Cuts open connections.
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    /// "127.0.0.1:PORT"
    std::string address() const;
    /// The bytes inside TLS that scripts have read: one text per connection, in the order in which the
    /// connections came.
    std::vector<std::string> received() const;
    /// The whole requests that scripts have read.
    std::vector<std::string> requests() const;

private:
    const std::unique_ptr<State> mState;
};

/// A whole HTTP/1.1 reply. Each of `headers` ends with "\r\n".
KAVIO_API std::string httpReply(int status, std::string_view body, std::string_view headers = "");
/// `plain` in HTTP's "deflate" encoding.
KAVIO_API std::string deflated(std::string_view plain);

/// After the handshake, passes each request of a connection to `meet`, for as long as that returns true.
KAVIO_API RawServer::Script meeting(std::function<bool(RawServer::Connection&, const std::string& request)> meet);
///@{
/// Answers all requests of a connection, each with what `answer` makes of its text, or with the same reply.
KAVIO_API RawServer::Script answering(std::function<std::string(const std::string& request)> answer);
KAVIO_API RawServer::Script answering(const std::string& reply);
///@}

}  // namespace kavio::test
