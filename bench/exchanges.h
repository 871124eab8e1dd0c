#pragma once

#include "network/api_request.h"
#include "platform/linux/url_session_curl.h"
#include "platform/linux/url_session_engine.h"
#include "setup.h"

#include <kavio/delegate.h>
#include <kavio/platform/url_session.h>

#include <condition_variable>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace kavio::bench {

/// The look-up of one machine, which all benchmarks send.
APIRequest machineRequest();
/// That request as it goes out.
UrlRequest preparedRequest();
/// The same for an application: signed, sent, decoded, and reported on the main thread.
Machines lookUpMachine();

/// A request made directly with libcurl, with those of the library's settings that affect what is sent.
class BareExchange {
public:
    BareExchange(const Setup& setup, const UrlRequest& request);

    /// Returns the status of the reply, whose body is then in `body()`.
    long run();
    const std::string& body() const { return mBody; }

private:
    const UrlRequest mRequest;
    CurlMulti mMulti{curl_multi_init()};
    CurlEasy mEasy{curl_easy_init()};
    CurlList mHeaders;
    CurlList mConnectTo;
    std::string mBody;
};

/// The same for a caller who must not be blocked: on a network thread, with as little as possible beyond that.
class ThreadedBareExchange {
public:
    ThreadedBareExchange(const Setup& setup, const UrlRequest& request);
    ~ThreadedBareExchange();

    long run();

private:
    void serve();

    BareExchange mExchange;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::optional<std::promise<long>> mAsked;
    bool mEnds = false;
    std::thread mThread{[this] { serve(); }};
};

/// The library's session, trusting `authorities` instead of the system's.
class LibraryExchange {
public:
    LibraryExchange(const Setup& setup, const std::filesystem::path& authorities);

    /// Returns the status of the reply.
    long run(const UrlRequest& request);

private:
    UrlEngine mEngine;
};

}  // namespace kavio::bench
