#include "platform/linux/url_session_curl.h"
#include "platform/linux/url_session_wakeup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace kavio {
namespace {

// A lost one leaves both threads waiting for each other.
TEST(Wakeup, LosesNoSignal) {
    constexpr int last = 20'000;
    constexpr int ahead = 3;  // so that some come while the thread works
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
            EXPECT_FALSE(wakeup.wait(multi.get(), CURL_SOCKET_BAD, 60'000));
        } else {
            wakeup.wait();
        }
        answered = asked.load();
    }
    asking.join();
}

}  // namespace
}  // namespace kavio
