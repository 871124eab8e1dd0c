#pragma once

#include "network/api_request.h"
#include "platform/linux/thread_queue.h"
#include "platform/linux/url_session_curl.h"
#include "platform/linux/url_session_engine.h"
#include "setup.h"

#include <kavio/delegate.h>
#include <kavio/platform/url_session.h>

#include <memory>
#include <string>

namespace kavio::bench {

/// The look-up of one machine, which all benchmarks send.
APIRequest machineRequest();
/// That request as it goes out.
UrlRequest preparedRequest();
/// The same for an application: signed, sent, decoded, and reported on the main thread.
Machines lookUpMachine();
/// So many look-ups at once, each by a facade of its own.
void lookUpMachines(std::size_t facades);

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

/// The least that any library on top of libcurl must do for a caller who must not be blocked: on a network thread, it
/// signs the request, sends it and decodes the reply.
class ThreadedBareExchange {
public:
    ThreadedBareExchange(const Setup& setup, const UrlRequest& request) : mExchange(setup, request) {}

    long run();

private:
    BareExchange mExchange;
    const std::shared_ptr<WorkQueue> mThread = makeThreadQueue("bare", 1);
};

/// The library's session, trusting our authority as well as the system's.
class LibraryExchange {
public:
    explicit LibraryExchange(const Setup& setup);

    /// Returns the status of the reply.
    long run(const UrlRequest& request);

private:
    UrlEngine mEngine;
};

}  // namespace kavio::bench
