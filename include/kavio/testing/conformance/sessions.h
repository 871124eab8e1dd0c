#pragma once

// What the suites of the two kinds of sessions share.

#include <kavio/platform/url_session.h>
#include <kavio/testing/eventually.h>
#include <kavio/testing/peer.h>

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace kavio::test {

/// A port's sessions, as the suites see them.
struct SessionPort {
    std::string name;          ///< shown with each test
    SessionFactory factory{};  ///< for sessions with real connections
    /// Runs `test` where the device has no route to the network; false if that is not permitted. Unset where tests
    /// cannot do this.
    std::function<bool(const std::function<void()>& test)> withoutRoute{};
    /// For sessions that have no real connections; unset for the peer that serves them.
    std::function<std::unique_ptr<Peer>()> makePeer{};
};

/// Its name.
inline std::ostream& operator<<(std::ostream& out, const SessionPort& port) { return out << port.name; }

/// How a request ended.
using Outcome = std::variant<UrlReply, UrlError>;

/// "200 BODY", or "-1001 REASON".
inline std::string text(const Outcome& outcome) {
    if (const auto* error = std::get_if<UrlError>(&outcome))
        return std::to_string(error->code) + " " + error->description;
    const auto& reply = std::get<UrlReply>(outcome);
    return std::to_string(reply.status) + " " + reply.body.value_or("(no body)");
}

/// 0 for a reply.
inline int errorCode(const Outcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    return error == nullptr ? 0 : error->code;
}

/// A reply counts as sent.
inline bool mayHaveBeenSent(const Outcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    return error == nullptr || error->mayHaveBeenSent;
}

/// How a request ended, in short: "200 BODY", "-1005", "-1005 with STATUS"; and "unsent" if nothing can have left.
inline std::string ending(const Outcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    if (error == nullptr) return text(outcome);
    auto said = std::to_string(error->code);
    if (error->status) said += " with " + std::to_string(*error->status);
    return error->mayHaveBeenSent ? said : said + " unsent";
}

///@{
/// A request with no headers, and with time enough for a busy machine.
inline UrlRequest get(std::string url, Idempotency idempotency = Idempotency::REPEATABLE) {
    return {"GET", std::move(url), {}, {}, patience, idempotency};
}

inline UrlRequest post(std::string url, std::string body, Idempotency idempotency = Idempotency::ONCE) {
    return {"POST", std::move(url), {}, std::move(body), patience, idempotency};
}
///@}

/// A request on its way, and what its session has said of it.
class Watched {
public:
    /// `name` is what failures call it.
    explicit Watched(std::string name) : mName(std::move(name)) {}
    /// Takes the outcome; `then` is what else the completion does, before that.
    UrlSession::Completion completion(std::function<void()> then = nullptr) {
        auto token = std::make_shared<int>();
        mToken = token;
        return [this, held = std::move(token), more = std::move(then)](Outcome outcome) {
            const bool isInside = mCaller.load() == std::this_thread::get_id();
            if (more) more();
            const std::lock_guard lock(mMutex);
            mWasInside = mWasInside || isInside;
            mOutcomes.push_back(std::move(outcome));
        };
    }
    /// Makes a call, inside which the completion must not come.
    template <class Call>
    auto calling(Call call) {
        mCaller = std::this_thread::get_id();
        const std::shared_ptr<void> returned(nullptr, [this](void*) { mCaller = std::thread::id(); });
        return call();
    }

    /// Whether its completion has been called.
    bool isCompleted() const { return times() > 0; }
    /// How often.
    std::size_t times() const {
        const std::lock_guard lock(mMutex);
        return mOutcomes.size();
    }
    /// How it ended: "nothing" if it has not.
    std::string ended() const {
        const std::lock_guard lock(mMutex);
        return mOutcomes.empty() ? "nothing" : ending(mOutcomes.front());
    }
    /// Whether the session has let go of the completion.
    bool isReleased() const { return mToken.expired(); }
    /// Fails the test unless the completion was called once, not inside the call, and released.
    void judge() const {
        EXPECT_EQ(times(), 1U) << "The completion of " << mName << " must be called exactly once.";
        EXPECT_FALSE(mWasInside) << "The completion of " << mName << " was called inside the call that takes it.";
        EXPECT_TRUE(eventually([&] { return isReleased(); }))
            << "The completion of " << mName << " is still held though it has been called.";
    }

    /// Null for a request of an ordinary session.
    std::shared_ptr<DownloadTask> task;

private:
    const std::string mName;
    mutable std::mutex mMutex;
    std::vector<Outcome> mOutcomes;  // guarded by mMutex, as is whether a completion came inside a call
    bool mWasInside = false;
    std::weak_ptr<int> mToken;  // held by the completion
    std::atomic<std::thread::id> mCaller;
};

/// With which session a request is carried out.
enum class Manner { ORDINARY, BACKGROUND };

/// One peer, the sessions that reach it, and the requests that they carry out.
class SessionFixture : public testing::TestWithParam<SessionPort> {
protected:
    /// Made when it is needed, because a device may have several networks.
    Peer& peer() {
        if (!mPeer) mPeer = GetParam().makePeer ? GetParam().makePeer() : makeRawPeer(GetParam().factory);
        return *mPeer;
    }
    std::vector<Manner> manners() {
        std::vector<Manner> found;
        if (session()) found.push_back(Manner::ORDINARY);
        if (backgroundSession()) found.push_back(Manner::BACKGROUND);
        return found;
    }
    std::shared_ptr<UrlSession>& session() {
        if (!mSession) mSession = peer().makeSession();
        return mSession;
    }
    std::shared_ptr<BackgroundUrlSession>& backgroundSession() {
        if (!mBackgroundSession) mBackgroundSession = peer().makeBackgroundSession();
        return mBackgroundSession;
    }

    Watched& send(Manner manner, const UrlRequest& request, std::function<void()> then = nullptr) {
        auto& watched = *mAll.emplace_back(std::make_unique<Watched>(request.method + " " + request.url));
        // Held, because a completion may let go of them.
        const auto ordinary = manner == Manner::ORDINARY ? session() : nullptr;
        const auto background = manner == Manner::BACKGROUND ? backgroundSession() : nullptr;
        watched.calling([&] {
            if (ordinary)
                ordinary->dataTask(request, watched.completion(std::move(then)));
            else
                watched.task = background->downloadTask(request, watched.completion(std::move(then)));
        });
        return watched;
    }
    /// How the request ends; "nothing" if it takes too long.
    std::string endOf(const Watched& watched) {
        peer().runUntil([&] { return watched.isCompleted(); });
        return watched.ended();
    }
    std::string fetched(Manner manner, const UrlRequest& request) { return endOf(send(manner, request)); }
    /// Ends the session, which must tell all that is open.
    void destroy(Manner manner) {
        if (manner == Manner::ORDINARY) mSession.reset();
        if (manner == Manner::BACKGROUND) mBackgroundSession.reset();
    }
    void TearDown() override {
        mSession.reset();
        mBackgroundSession.reset();
        for (const auto& watched : mAll) watched->judge();
    }

private:
    std::unique_ptr<Peer> mPeer;
    std::vector<std::unique_ptr<Watched>> mAll;  // outlive the sessions
    std::shared_ptr<UrlSession> mSession;
    std::shared_ptr<BackgroundUrlSession> mBackgroundSession;
};

/// For failures.
inline const char* nameOf(Manner manner) {
    return manner == Manner::ORDINARY ? "with the ordinary session" : "with the background session";
}

// For the suites that look at bytes.

/// One connection of a server that a script treats.
using Connection = RawServer::Connection;

/// What a server does after a request, before it closes the connection.
using Ending = std::function<void(Connection&)>;

/// Sends `bytes`, and closes the connection.
inline Ending sending(std::string bytes) {
    return [bytes = std::move(bytes)](Connection& connection) { connection.send(bytes); };
}

/// Sends `bytes`, and then nothing until the client leaves.
inline Ending stallingAfter(std::string bytes) {
    return [bytes = std::move(bytes)](Connection& connection) { connection.send(bytes), connection.stall(); };
}

/// Ends a connection whose request is for "/N" as the `N`th of `cases` does.
template <class Case>
RawServer::Script endingAs(const std::vector<Case>& cases) {
    return meeting([&](Connection& connection, const std::string& request) {
        cases.at(std::stoul(request.substr(request.find('/') + 1))).ending(connection);
        return false;
    });
}

/// Fulfils `promise`, and fails the test if it is called twice.
inline UrlSession::Completion fulfilling(std::shared_ptr<std::promise<Outcome>> promise) {
    return [promise = std::move(promise), isDone = std::make_shared<std::atomic<bool>>(false)](Outcome outcome) {
        if (isDone->exchange(true))
            ADD_FAILURE() << "A completion must be called exactly once, but it was called again.";
        else
            promise->set_value(std::move(outcome));
    };
}

/// Starts a request.
inline std::future<Outcome> begin(UrlSession& session, UrlRequest request) {
    const auto promise = std::make_shared<std::promise<Outcome>>();
    session.dataTask(std::move(request), fulfilling(promise));
    return promise->get_future();
}

/// Waits for it, and fails the test if it takes too long.
inline Outcome outcomeOf(std::future<Outcome> outcome) {
    if (outcome.wait_for(patience) == std::future_status::ready) return outcome.get();
    ADD_FAILURE() << "A completion must be called exactly once, but it never was.";
    return UrlError{};
}

/// Starts a request, and waits for its outcome.
inline Outcome fetch(UrlSession& session, UrlRequest request) { return outcomeOf(begin(session, std::move(request))); }

/// A request of a background session.
struct Begun {
    std::shared_ptr<DownloadTask> task;  ///< gives it up
    std::future<Outcome> outcome;        ///< once it is completed
};

/// Starts a request.
inline Begun begin(BackgroundUrlSession& session, UrlRequest request) {
    const auto promise = std::make_shared<std::promise<Outcome>>();
    auto task = session.downloadTask(std::move(request), fulfilling(promise));
    return {std::move(task), promise->get_future()};
}

/// Starts a request, and waits for its outcome.
inline Outcome fetch(BackgroundUrlSession& session, UrlRequest request) {
    return outcomeOf(begin(session, std::move(request)).outcome);
}

}  // namespace kavio::test
