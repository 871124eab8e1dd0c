#pragma once

#include <httplib.h>

#include <chrono>

namespace kavio::sandbox {

/// A server that speaks only HTTP/2, over TLS. It listens and stops as the one that it is derived from, which also
/// gives each connection a thread.
class Http2Server : public httplib::SSLServer {
public:
    Http2Server(X509* certificate, EVP_PKEY* key, std::chrono::milliseconds idleLimit, Handler handler);

private:
    bool process_and_close_socket(socket_t socket) override;

    const std::chrono::milliseconds mIdleLimit;
    const Handler mHandler;
};

}  // namespace kavio::sandbox
