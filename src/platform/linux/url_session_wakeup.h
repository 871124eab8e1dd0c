#pragma once

#include <curl/curl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <new>

namespace kavio {

/// Ends the network thread's wait. libcurl's own way takes a trip through a pair of sockets at every hand-over.
class Wakeup {
public:
    Wakeup() {
        if (mDescriptor < 0) throw std::bad_alloc();
    }
    ~Wakeup() { close(mDescriptor); }
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    void signal() const { eventfd_write(mDescriptor, 1); }
    /// Waits for a signal, for what the open exchanges wait for, or until the time is up. True if there is something to
    /// read from `idle`, which may be no socket.
    bool wait(CURLM* multi, curl_socket_t idle, int milliseconds) const {
        std::array<curl_waitfd, 2> watched{{{mDescriptor, CURL_WAIT_POLLIN, 0}, {idle, CURL_WAIT_POLLIN, 0}}};
        curl_multi_wait(multi, watched.data(), idle == CURL_SOCKET_BAD ? 1 : 2, milliseconds, nullptr);
        eventfd_t count = 0;
        if (watched[0].revents != 0) eventfd_read(mDescriptor, &count);
        return watched[1].revents != 0;
    }

private:
    const int mDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
};

}  // namespace kavio
