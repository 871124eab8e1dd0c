#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace kavio::test {

/// Sends a number over a channel between two processes; false if the other one is gone.
inline bool tell(int channel, int number) { return ::write(channel, &number, sizeof number) == sizeof number; }
inline bool hear(int channel, int& number) { return ::read(channel, &number, sizeof number) == sizeof number; }

/// A copy of this process that does `work` at the other end of the channel and reports by its status how that went.
class OtherProcess {
public:
    explicit OtherProcess(const std::function<bool(int channel)>& work) {
        int ends[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        process = ::fork();
        ::close(ends[process == 0 ? 0 : 1]);
        if (process == 0) ::_exit(work(ends[1]) ? 0 : 1);
        channel = ends[0];
    }
    ~OtherProcess() {
        ::kill(process, SIGKILL);
        ::close(channel);
        ::waitpid(process, nullptr, 0);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    /// Waits until it ends.
    int status() const {
        int status = -1;
        ::waitpid(process, &status, 0);
        return status;
    }

    pid_t process = 0;
    int channel = -1;
};

}  // namespace kavio::test
