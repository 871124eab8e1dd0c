#pragma once

#include "support/temporary_folder.h"

#include <kavio/platform/url_session.h>

#include <deque>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace kavio::test {

/// What the scripted sessions share: requests are recorded, and stay open until the test answers them, oldest first.
/// As with a real session a completion runs on another thread than the caller's; it has returned when `complete` does.
template <class Session, class Reply>
class ScriptedSession : public Session {
public:
    using typename Session::Completion;

    ~ScriptedSession() override {
        while (complete(UrlError{UrlError::cancelled, "cancelled", std::nullopt})) {
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

    /// Completes the oldest open task; false when there is none.
    bool complete(std::variant<Reply, UrlError> outcome) {
        std::unique_lock lock(mMutex);
        if (mOpen.empty()) return false;
        auto completion = std::move(mOpen.front());
        mOpen.pop_front();
        lock.unlock();
        std::thread(std::move(completion), std::move(outcome)).join();
        return true;
    }
    bool fail(UrlError error) { return complete(std::move(error)); }
    bool fail(UrlError::Code code) { return fail(UrlError{code, "scripted failure", std::nullopt}); }

protected:
    void add(UrlRequest request, Completion completion) {
        const std::lock_guard lock(mMutex);
        mRequests.push_back(std::move(request));
        mOpen.push_back(std::move(completion));
    }

private:
    mutable std::mutex mMutex;
    std::vector<UrlRequest> mRequests;
    std::deque<Completion> mOpen;
};

class FakeUrlSession final : public ScriptedSession<UrlSession, UrlReply> {
public:
    void dataTask(UrlRequest request, Completion completion) override {
        add(std::move(request), std::move(completion));
    }

    bool answer(int status, std::string body) { return complete(UrlReply{status, std::move(body)}); }
    bool answerWithoutBody(int status) { return complete(UrlReply{status, std::nullopt}); }
};

class FakeBackgroundUrlSession final : public ScriptedSession<BackgroundUrlSession, DownloadReply> {
public:
    void downloadTask(UrlRequest request, Completion completion) override {
        add(std::move(request), std::move(completion));
    }
    void onEventsDelivered(std::function<void()>) override {}

    bool answer(int status, std::string_view body) {
        const TemporaryFolder folder;
        std::ofstream(folder.path() / "reply", std::ios::binary) << body;
        return complete(DownloadReply{status, folder.path() / "reply"});
    }
    bool answerWithUnreadableFile(int status) { return complete(DownloadReply{status, "/missing"}); }
};

}  // namespace kavio::test
