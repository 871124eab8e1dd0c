#pragma once

#include "platform/linux/url_session_exchange.h"

#include <kavio/platform/url_session.h>

#include <functional>
#include <memory>
#include <thread>

namespace kavio {

/// Carries out requests on its own network thread; the completions run there. Destroying the engine completes
/// what is open with `UrlError::cancelled` and ends the thread; if a completion does so, the thread ends once
/// that has returned.
class UrlEngine {
public:
    using Completion = std::function<void(UrlOutcome)>;

    explicit UrlEngine(UrlConduct conduct);
    ~UrlEngine();
    UrlEngine(const UrlEngine&) = delete;
    UrlEngine& operator=(const UrlEngine&) = delete;

    void submit(UrlRequest request, Completion completion);
    /// The same for a request that can be given up.
    std::shared_ptr<DownloadTask> submitTask(UrlRequest request, Completion completion);

private:
    class Loop;
    class SubmittedTask;

    std::shared_ptr<Loop> mLoop;
    std::thread mThread;
};

}  // namespace kavio
