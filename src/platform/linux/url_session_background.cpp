#include "platform/linux/url_session.h"
#include "platform/linux/url_session_engine.h"

#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace kavio {
namespace {

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// A reply's body in a file that nobody else can read, for as long as this object lives. It is in memory: a full disk
/// must not turn an order that was placed into a failure.
class StoredBody {
public:
    explicit StoredBody(std::string_view body) : mIsWhole(mFile >= 0 && writeAll(mFile, body)) {}
    ~StoredBody() {
        if (mFile >= 0) ::close(mFile);
    }
    StoredBody(const StoredBody&) = delete;
    StoredBody& operator=(const StoredBody&) = delete;

    bool isWhole() const { return mIsWhole; }
    std::filesystem::path path() const { return "/proc/self/fd/" + std::to_string(mFile); }

private:
    const int mFile = ::memfd_create("kavio-reply", MFD_CLOEXEC);
    const bool mIsWhole;
};

/// Hands the outcome to `completion`, a reply's body by way of a file that is gone afterwards.
void deliver(const UrlOutcome& outcome, const BackgroundUrlSession::Completion& completion) {
    if (const auto* error = std::get_if<UrlError>(&outcome)) return completion(*error);
    const auto& reply = std::get<UrlReply>(outcome);
    const StoredBody stored(reply.body ? *reply.body : std::string_view());
    if (!stored.isWhole()) {
        return completion(UrlError{UrlError::badServerResponse, "The device cannot store the reply.", reply.status});
    }
    completion(DownloadReply{reply.status, stored.path()});
}

/// Counts the open tasks. Shared with the completions, which may outlast the session.
class OpenTasks {
public:
    void setHandler(std::function<void()> handler) {
        const std::lock_guard lock(mMutex);
        mHandler = std::move(handler);
    }
    void add() {
        const std::lock_guard lock(mMutex);
        ++mCount;
    }
    void remove() {
        std::function<void()> handler;
        {
            const std::lock_guard lock(mMutex);
            if (--mCount == 0) handler = mHandler;
        }
        if (handler) handler();
    }

private:
    std::mutex mMutex;
    std::size_t mCount = 0;
    std::function<void()> mHandler;
};

class CurlBackgroundUrlSession : public BackgroundUrlSession {
public:
    explicit CurlBackgroundUrlSession(const UrlSessionConfiguration& configuration)
        : mOpen(std::make_shared<OpenTasks>()), mEngine(UrlConduct(configuration, true)) {}

    std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) override {
        mOpen->add();
        return mEngine.submit(std::move(request),
                              [open = mOpen, completion = std::move(completion)](const UrlOutcome& outcome) {
                                  deliver(outcome, completion);
                                  open->remove();
                              });
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
