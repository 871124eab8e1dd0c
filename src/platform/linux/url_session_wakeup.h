#pragma once

#include <curl/curl.h>
#include <semaphore.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <new>

namespace kavio {

/// Ends the network thread's wait. libcurl's own way takes a trip through a pair of sockets at every hand-over.
class Wakeup {
public:
    Wakeup() {
        if (mDescriptor < 0) throw std::bad_alloc();
        sem_init(&mSemaphore, 0, 0);
    }
    ~Wakeup() {
        sem_destroy(&mSemaphore);
        close(mDescriptor);
    }
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    /// Ends the present wait, or else the next one.
    void signal() {
        const auto state = mState.exchange(State::SIGNALLED);
        if (state == State::SLEEPING) sem_post(&mSemaphore);
        if (state == State::POLLING) eventfd_write(mDescriptor, 1);
    }

    /// Waits for a signal only. This is cheaper than polling, and it is how the thread usually waits for a request.
    void wait() {
        if (enter(State::SLEEPING)) {
            while (sem_wait(&mSemaphore) != 0 && errno == EINTR) {
            }
        }
        mState = State::WORKING;
    }
    /// Waits for a signal, for what the open exchanges wait for, or until the time is up. True if there is something to
    /// read from `idle`, which may be no socket.
    bool wait(CURLM* multi, curl_socket_t idle, int milliseconds) {
        std::array<curl_waitfd, 2> watched{{{mDescriptor, CURL_WAIT_POLLIN, 0}, {idle, CURL_WAIT_POLLIN, 0}}};
        if (!enter(State::POLLING)) milliseconds = 0;
        curl_multi_wait(multi, watched.data(), idle == CURL_SOCKET_BAD ? 1 : 2, milliseconds, nullptr);
        mState = State::WORKING;
        eventfd_t count = 0;
        if (watched[0].revents != 0) eventfd_read(mDescriptor, &count);
        return watched[1].revents != 0;
    }

private:
    enum class State { WORKING, SLEEPING, POLLING, SIGNALLED };

    /// False if there has been a signal since the last wait.
    bool enter(State waiting) {
        State working = State::WORKING;
        return mState.compare_exchange_strong(working, waiting);
    }

    const int mDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    sem_t mSemaphore{};
    std::atomic<State> mState = State::WORKING;
};

}  // namespace kavio
