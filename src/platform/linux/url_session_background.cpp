#include "platform/linux/url_session.h"
#include "platform/linux/url_session_engine.h"

#include <mutex>
#include <utility>

namespace kavio {
namespace {

/// Counts the open tasks. Shared with the completions, which may outlast the session.
class OpenTasks {
public:
    void setHandler(std::function<void()> handler) {
        auto shared = std::make_shared<const std::function<void()>>(std::move(handler));
        const std::lock_guard lock(mMutex);
        mHandler.swap(shared);
    }
    void add() {
        const std::lock_guard lock(mMutex);
        ++mCount;
    }
    void remove() {
        std::shared_ptr<const std::function<void()>> handler;
        {
            const std::lock_guard lock(mMutex);
            if (--mCount == 0) handler = mHandler;
        }
        if (handler && *handler) (*handler)();
    }

private:
    std::mutex mMutex;
    std::size_t mCount = 0;
    std::shared_ptr<const std::function<void()>> mHandler;  // shared, as a copy might take memory
};

class CurlBackgroundUrlSession : public BackgroundUrlSession {
public:
    explicit CurlBackgroundUrlSession(const UrlSessionConfiguration& configuration)
        : mOpen(std::make_shared<OpenTasks>()), mEngine(UrlConduct(configuration, true)) {}

    std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) override {
        mOpen->add();
        try {
            return mEngine.submitTask(std::move(request),
                                      [open = mOpen, completion = std::move(completion)](UrlOutcome outcome) {
                                          completion(std::move(outcome));
                                          open->remove();
                                      });
        } catch (...) {
            mOpen->remove();
            throw;
        }
    }

    void onEventsDelivered(std::function<void()> handler) override { mOpen->setHandler(std::move(handler)); }

private:
    std::shared_ptr<OpenTasks> mOpen;
    UrlEngine mEngine;
};

}  // namespace

std::shared_ptr<BackgroundUrlSession> makeBackgroundUrlSession(const UrlSessionConfiguration& configuration) {
    return std::make_shared<CurlBackgroundUrlSession>(configuration);
}

}  // namespace kavio
