#include "platform/linux/url_session_curl.h"
#include "platform/linux/url_session_wakeup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <thread>

namespace kavio {
namespace {

/// Another thread counts up, signals each number, and is at most `ahead` numbers ahead of the one that waits. After a
/// lost signal with `ahead` 1, neither would get any further.
void signalTo(int last, int ahead) {
    const CurlMulti multi(curl_multi_init());
    Wakeup wakeup;
    std::atomic<int> asked = 0;
    std::atomic<int> answered = 0;
    std::thread asking([&] {
        while (asked < last) {
            if (asked >= answered + ahead) continue;
            ++asked;
            wakeup.signal();
        }
    });
    for (bool polls = false; answered < last; polls = !polls) {
        if (polls) {
            EXPECT_FALSE(wakeup.wait(multi.get(), CURL_SOCKET_BAD, INT_MAX));
        } else {
            wakeup.wait();
        }
        answered = asked.load();
    }
    asking.join();
}

TEST(Wakeup, LosesNoSignal) {
    signalTo(20'000, 1);
    signalTo(20'000, 3);  // some come while the thread works
}

}  // namespace
}  // namespace kavio
