#pragma once

#include <kavio/platform/url_session.h>

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace kavio::test {

/// What the scripted sessions share: requests are recorded, and stay open until the test answers them, oldest first.
/// As with a real session a completion runs on another thread than the caller's; it has returned when `complete` does.
template <class Outcome>
class OpenTasks {
public:
    using Completion = std::function<void(Outcome)>;

    void add(UrlRequest request, Completion completion) {
        const std::lock_guard lock(mMutex);
        mRequests.push_back(std::move(request));
        mOpen.push_back(std::move(completion));
    }

    /// False when no task is open.
    bool complete(Outcome outcome) {
        std::unique_lock lock(mMutex);
        if (mOpen.empty()) return false;
        auto completion = std::move(mOpen.front());
        mOpen.pop_front();
        lock.unlock();
        std::thread(std::move(completion), std::move(outcome)).join();
        return true;
    }

    void cancelAll() {
        while (complete(UrlError{UrlError::cancelled, "cancelled", std::nullopt})) {
        }
    }

    std::vector<UrlRequest> requests() const {
        const std::lock_guard lock(mMutex);
        return mRequests;
    }

    std::size_t open() const {
        const std::lock_guard lock(mMutex);
        return mOpen.size();
    }

private:
    mutable std::mutex mMutex;
    std::vector<UrlRequest> mRequests;
    std::deque<Completion> mOpen;
};

class FakeUrlSession final : public UrlSession {
public:
    ~FakeUrlSession() override { mTasks.cancelAll(); }
    void dataTask(UrlRequest request, Completion completion) override {
        mTasks.add(std::move(request), std::move(completion));
    }

    /// All requests ever made, in order.
    std::vector<UrlRequest> requests() const { return mTasks.requests(); }
    std::size_t open() const { return mTasks.open(); }

    /// Each completes the oldest open task; false when there is none.
    bool answer(int status, std::string body, HeaderFields headers = {}) {
        return mTasks.complete(UrlReply{status, std::move(headers), std::move(body)});
    }
    bool answerWithoutBody(int status) { return mTasks.complete(UrlReply{status, {}, std::nullopt}); }
    bool fail(UrlError error) { return mTasks.complete(std::move(error)); }
    bool fail(UrlError::Code code) { return fail(UrlError{code, "scripted failure", std::nullopt}); }

private:
    OpenTasks<std::variant<UrlReply, UrlError>> mTasks;
};

class FakeBackgroundUrlSession final : public BackgroundUrlSession {
public:
    ~FakeBackgroundUrlSession() override { mTasks.cancelAll(); }
    void downloadTask(UrlRequest request, Completion completion) override {
        mTasks.add(std::move(request), std::move(completion));
    }
    void onEventsDelivered(std::function<void()> handler) override;

    /// All requests ever made, in order.
    std::vector<UrlRequest> requests() const { return mTasks.requests(); }
    std::size_t open() const { return mTasks.open(); }

    /// Each completes the oldest open task, and delivers the events when it was the last; false when there is none.
    bool answer(int status, std::string_view body);
    bool answerWithUnreadableFile(int status);
    bool fail(UrlError error) { return complete(std::move(error)); }
    bool fail(UrlError::Code code) { return fail(UrlError{code, "scripted failure", std::nullopt}); }

private:
    using Outcome = std::variant<DownloadReply, UrlError>;
    bool complete(Outcome outcome);

    OpenTasks<Outcome> mTasks;
    std::mutex mMutex;
    std::function<void()> mEventsDelivered;
};

}  // namespace kavio::test
