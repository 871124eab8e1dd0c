#pragma once

#include <curl/curl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <mutex>
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

    /// Ends the present wait, or else the next one.
    void signal() {
        const std::lock_guard lock(mMutex);
        mIsSignalled = true;
        if (mThread == Thread::SLEEPS) mChanged.notify_one();
        if (mThread == Thread::POLLS) eventfd_write(mDescriptor, 1);
    }

    /// Waits for nothing but a signal. That is cheaper than to poll, and the usual wait before a request.
    void wait() {
        std::unique_lock lock(mMutex);
        mThread = Thread::SLEEPS;
        mChanged.wait(lock, [this] { return mIsSignalled; });
        goOn();
    }
    /// Waits for a signal, for what the open exchanges wait for, or until the time is up. True if there is something to
    /// read from `idle`, which may be no socket.
    bool wait(CURLM* multi, curl_socket_t idle, int milliseconds) {
        {
            const std::lock_guard lock(mMutex);
            if (mIsSignalled) milliseconds = 0;
            mThread = Thread::POLLS;
        }
        std::array<curl_waitfd, 2> watched{{{mDescriptor, CURL_WAIT_POLLIN, 0}, {idle, CURL_WAIT_POLLIN, 0}}};
        curl_multi_wait(multi, watched.data(), idle == CURL_SOCKET_BAD ? 1 : 2, milliseconds, nullptr);
        const std::lock_guard lock(mMutex);
        eventfd_t count = 0;
        if (mIsSignalled) eventfd_read(mDescriptor, &count);
        goOn();
        return watched[1].revents != 0;
    }

private:
    enum class Thread { WORKS, SLEEPS, POLLS };

    void goOn() {
        mThread = Thread::WORKS;
        mIsSignalled = false;
    }

    const int mDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    std::mutex mMutex;  // guards all below
    std::condition_variable mChanged;
    Thread mThread = Thread::WORKS;
    bool mIsSignalled = false;
};

}  // namespace kavio
