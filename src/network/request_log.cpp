#include "models/date_text.h"
#include "network/masked.h"
#include "util/contained.h"

#include <kavio/platform/request_log.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace kavio {
namespace {

/// What the sessions of one platform share.
class Log {
public:
    Log(RequestLog write, std::shared_ptr<const Clock> clock) : mWrite(std::move(write)), mClock(std::move(clock)) {}

    long nextNumber() { return ++mLast; }
    std::chrono::nanoseconds uptime() const { return mClock->uptime(); }
    /// Nothing, if there is no memory to say it.
    template <class Describe>
    void write(long number, const Describe& describe) const {
        contained([&] { mWrite(DateText::format(mClock->now()) + " #" + std::to_string(number) + " " + describe()); });
    }

private:
    const RequestLog mWrite;
    const std::shared_ptr<const Clock> mClock;
    std::atomic<long> mLast = 0;
};

std::string described(const UrlRequest& request) {
    auto text = request.method + " " + maskedUrl(request.url) + " " + maskedHeaders(request.headers);
    return request.body ? text + " " + maskedBody(*request.body) : text;
}

std::string described(const UrlReply& reply, const std::string& time) {
    auto text = std::to_string(reply.status) + time;
    if (!reply.body) return text + ", no body";
    return text + ", " + std::to_string(reply.body->size()) + " bytes " + maskedBody(*reply.body);
}

std::string described(const UrlError& error, const std::string& time) {
    return "no reply" + time + ", error " + std::to_string(error.code) +
           (error.mayHaveBeenSent ? ", may have been sent: " : ", not sent: ") + error.description;
}

/// Describes the request; what `completion` is called with is described, too.
UrlSession::Completion logged(const std::shared_ptr<Log>& log, UrlRequest& request, UrlSession::Completion completion) {
    const auto number = log->nextNumber();
    log->write(number, [&] { return described(request); });
    if (request.willWait) {
        request.willWait = [log, number, willWait = std::move(request.willWait)] {
            log->write(number, [] { return "waits for a network"; });
            willWait();
        };
    }
    return [log, number, begun = log->uptime(), completion = std::move(completion)](auto outcome) {
        using std::chrono::milliseconds;
        const auto taken = std::chrono::duration_cast<milliseconds>(log->uptime() - begun);
        log->write(number, [&] {
            const auto time = " after " + std::to_string(taken.count()) + " ms";
            return std::visit([&](const auto& ended) { return described(ended, time); }, outcome);
        });
        completion(std::move(outcome));
    };
}

class LoggedSession final : public UrlSession {
public:
    LoggedSession(std::shared_ptr<UrlSession> session, std::shared_ptr<Log> log)
        : mLog(std::move(log)), mSession(std::move(session)) {}

    void dataTask(UrlRequest request, Completion completion) override {
        completion = logged(mLog, request, std::move(completion));
        mSession->dataTask(std::move(request), std::move(completion));
    }

private:
    const std::shared_ptr<Log> mLog;
    const std::shared_ptr<UrlSession> mSession;
};

class LoggedBackgroundSession final : public BackgroundUrlSession {
public:
    LoggedBackgroundSession(std::shared_ptr<BackgroundUrlSession> session, std::shared_ptr<Log> log)
        : mLog(std::move(log)), mSession(std::move(session)) {}

    std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) override {
        completion = logged(mLog, request, std::move(completion));
        return mSession->downloadTask(std::move(request), std::move(completion));
    }
    void onEventsDelivered(std::function<void()> handler) override { mSession->onEventsDelivered(std::move(handler)); }

private:
    const std::shared_ptr<Log> mLog;
    const std::shared_ptr<BackgroundUrlSession> mSession;
};

}  // namespace

Platform withRequestLog(Platform platform, RequestLog write) {
    const auto log = std::make_shared<Log>(std::move(write), platform.clock);
    platform.urlSession = std::make_shared<LoggedSession>(std::move(platform.urlSession), log);
    platform.backgroundUrlSession =
        std::make_shared<LoggedBackgroundSession>(std::move(platform.backgroundUrlSession), log);
    return platform;
}

}  // namespace kavio
