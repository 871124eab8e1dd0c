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
    BareExchange(const Setup& setup, UrlRequest request);

    /// Returns the status of the reply, whose body is then in `body()`.
    long run();
    /// The same for another request with a handle of its own, as the library has it: a handle of libcurl 7.88 does not
    /// forget all of an earlier reply, and a header that goes on in the next one is written to memory that has been
    /// freed.
    long run(UrlRequest request);
    const std::string& body() const { return mBody; }

private:
    void makeHandle(UrlRequest request);

    UrlRequest mRequest;
    CurlMulti mMulti{curl_multi_init()};
    const std::string mAuthority;
    CurlList mHeaders;
    CurlList mConnectTo;
    std::string mBody;
    CurlEasy mEasy;
};

/// The least that any library on top of libcurl must do for a caller who must not be blocked: on a network thread, it
/// signs the request, sends it on a handle of its own and decodes the reply, whose objects go to the caller.
class ThreadedBareExchange {
public:
    ThreadedBareExchange(const Setup& setup, UrlRequest request) : mExchange(setup, std::move(request)) {}

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
