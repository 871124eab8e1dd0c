#pragma once

#include "authority.h"

#include <httplib.h>
#include <openssl/ssl.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

namespace kavio::sandbox {

/// The open TLS connections, so that stopping does not have to wait for idle ones.
class Connections {
public:
    void watch(SSL_CTX* context);
    /// Closes all open connections, and every later one.
    void close();

private:
    struct Entry;
    static void onState(const SSL* ssl, int where, int result);
    static void onFree(void* parent, void* entry, CRYPTO_EX_DATA* data, int index, long argument, void* pointer);
    static int entryIndex();

    std::mutex mMutex;
    std::set<int> mSockets;
    bool mClosed = false;
};

/// A listening socket on 127.0.0.1 and the threads behind it. Every request, whatever its method, goes to the one
/// handler, possibly even before the constructor has returned.
class Listener {
public:
    using Handler = std::function<void(Listener&, const httplib::Request&, httplib::Response&)>;
    enum class Protocol { http, https, http2 };

    /// Plain HTTP needs no identity. Throws if the port is not available.
    Listener(Protocol protocol, const Identity* identity, std::uint16_t port, std::chrono::seconds idleLimit,
             Handler handler);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::uint16_t port() const { return mPort; }
    /// Delays the calling handler. False if stopping has cut the delay short: then no reply is due.
    bool pause(std::chrono::milliseconds time);
    /// Ends all delays under way.
    void resume();
    /// Closes the connection of a request that came over TLS, or its stream if it has one. Its handler then sets no
    /// status. False for a request that came without TLS.
    static bool drop(const httplib::Request& request);

private:
    std::unique_ptr<httplib::Server> makeServer(Protocol protocol, const Identity* identity,
                                                std::chrono::seconds idleLimit, httplib::Server::Handler handler);

    Connections mConnections;
    std::mutex mMutex;
    std::condition_variable mResumed;
    std::uint64_t mResumptions = 0;
    bool mStopped = false;
    std::unique_ptr<httplib::Server> mServer;
    std::uint16_t mPort = 0;
    std::thread mThread;
};

}  // namespace kavio::sandbox
