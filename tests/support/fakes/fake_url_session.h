#pragma once

#include <kavio/platform/url_session.h>
#include <kavio/testing/boundary.h>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace kavio::test {

/// The errors of a request that has never left the device.
inline bool mayHaveBeenSent(UrlError::Code code) {
    switch (code) {
        case UrlError::badUrl:
        case UrlError::cannotFindHost:
        case UrlError::cannotConnectToHost:
        case UrlError::notConnectedToInternet:
        case UrlError::secureConnectionFailed:
        case UrlError::serverCertificateUntrusted:
            return false;
        case UrlError::cancelled:
        case UrlError::timedOut:
        case UrlError::networkConnectionLost:
        case UrlError::badServerResponse:
        case UrlError::dataLengthExceedsMaximum:
            return true;
    }
    return true;
}

/// What the scripted sessions share: requests are recorded, and stay open until the test answers them, oldest first. As
/// with a real session, a completion runs on a different thread from the caller's; it has returned when `complete`
/// does. A request leaves when the test says so or answers it; one that was given up before then gets
/// `UrlError::cancelled` instead of the test's answer.
template <class Session>
class ScriptedSession : public Session {
public:
    using typename Session::Completion;

    ~ScriptedSession() override {
        while (complete(UrlError{UrlError::cancelled, "cancelled", std::nullopt, true})) {
        }
    }

    /// All requests ever made, in order.
    std::vector<UrlRequest> requests() const {
        const std::lock_guard lock(mMutex);
        return mRequests;
    }
    std::size_t open() const {
        const std::lock_guard lock(mMutex);
        return mOpen.size();
    }

    /// Completes the oldest open task; false if there is none.
    bool complete(std::variant<UrlReply, UrlError> outcome) {
        std::unique_lock lock(mMutex);
        if (mOpen.empty()) return false;
        const auto task = std::move(mOpen.front());
        mOpen.pop_front();
        lock.unlock();
        if (!task->leave()) outcome = UrlError{UrlError::cancelled, "given up", std::nullopt, false};
        std::thread([&] {
            const InLibrary entered;
            const auto completion = std::move(task->completion);
            completion(std::move(outcome));
        }).join();
        return true;
    }
    bool fail(UrlError error) { return complete(std::move(error)); }
    bool fail(UrlError::Code code) {
        return fail(UrlError{code, "scripted failure", std::nullopt, mayHaveBeenSent(code)});
    }
    /// Drops what is open, without telling anybody.
    void forget() {
        const std::lock_guard lock(mMutex);
        mOpen.clear();
    }
    /// Lets the oldest open request leave; it can no longer be given up. False if there is none, or it was given up.
    bool leave() {
        const std::lock_guard lock(mMutex);
        return !mOpen.empty() && mOpen.front()->leave();
    }

protected:
    struct Task final : DownloadTask {
        explicit Task(Completion whenDone) : completion(std::move(whenDone)) {}

        bool cancel() override { return decide('c'); }
        bool leave() { return decide('l'); }

        Completion completion;

    private:
        bool decide(char wanted) {
            char known = 0;
            return mDecision.compare_exchange_strong(known, wanted) || known == wanted;
        }

        std::atomic<char> mDecision = 0;
    };

    std::shared_ptr<Task> add(UrlRequest request, Completion completion) {
        const std::lock_guard lock(mMutex);
        mRequests.push_back(std::move(request));
        return mOpen.emplace_back(std::make_shared<Task>(std::move(completion)));
    }

private:
    mutable std::mutex mMutex;
    std::vector<UrlRequest> mRequests;
    std::deque<std::shared_ptr<Task>> mOpen;
};

class FakeUrlSession final : public ScriptedSession<UrlSession> {
public:
    void dataTask(UrlRequest request, Completion completion) override {
        add(std::move(request), std::move(completion));
    }

    bool answer(int status, std::string body) { return complete(UrlReply{status, std::move(body)}); }
    bool answerWithoutBody(int status) { return complete(UrlReply{status, std::nullopt}); }
};

class FakeBackgroundUrlSession final : public ScriptedSession<BackgroundUrlSession> {
public:
    std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) override {
        return add(std::move(request), std::move(completion));
    }
    void onEventsDelivered(std::function<void()>) override {}

    bool answer(int status, std::string body) { return complete(UrlReply{status, std::move(body)}); }
};

}  // namespace kavio::test
