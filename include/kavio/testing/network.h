#pragma once

#include <kavio/export.h>
#include <kavio/platform/url_session.h>
#include <kavio/testing/timeline.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::test {

/// How a request fares.
struct Fate {
    ///@{
    /// Until it leaves the device, until it has reached the service, and until the reply is back.
    std::chrono::milliseconds connecting{0};
    std::chrono::milliseconds there{0};
    std::chrono::milliseconds back{0};
    ///@}
    /// What it ends with instead of a reply.
    std::optional<UrlError::Code> error{};
    /// Whether the service sees it. With an error after which nothing can have left, it never does.
    bool arrives = true;
    /// Sent again by the network itself, so that the service sees it twice; only for a request that may be repeated.
    bool isRepeated = false;
    /// The connection ends within the reply.
    bool isCut = false;
    /// Memory runs out where the reply arrives, so that nobody is told of it.
    bool isUnheard = false;
    /// What comes back instead of what the service has answered; the service still sees the request.
    std::optional<UrlReply> reply{};
};

/// The usual fates.
namespace fate {
///@{
/// No such host; nobody listens; the certificate is not the service's; TLS fails. Nothing leaves the device.
KAVIO_API Fate noHost();
KAVIO_API Fate noConnection();
KAVIO_API Fate untrusted();
KAVIO_API Fate notSecure();
///@}
/// The connection ends while the request is on its way: the service never sees it.
KAVIO_API Fate requestLost();
/// The service has acted, but its reply does not arrive.
KAVIO_API Fate replyLost();
/// No answer comes until the request's time is up, whether the service has acted or not.
KAVIO_API Fate timesOut(bool arrives = true);
///@{
/// What comes back is not HTTP; or is more than a reply may hold.
KAVIO_API Fate unreadable();
KAVIO_API Fate tooLarge();
///@}
/// The reply arrives, but there is no memory left to say so.
KAVIO_API Fate outOfMemory();
///@{
/// The service acts, and these come back instead of its answer.
KAVIO_API Fate answered(int status, std::string body);
KAVIO_API Fate answeredWithoutBody(int status);
///@}
}  // namespace fate

/// Whether a request that ended with `code` may have reached the service.
KAVIO_API bool mayHaveBeenSent(UrlError::Code code);

/// What a server makes of a request.
struct Handled {
    UrlReply reply;                      ///< what it answers
    std::chrono::milliseconds delay{0};  ///< how long it takes to
    ///@{
    /// The connection is closed instead of the reply, or within it.
    bool isLost = false;
    bool isCut = false;
    ///@}
};

/// The network of a device in a box. Unless a test says otherwise, each request reaches the server and is answered
/// without time passing; but nothing happens before the timeline runs. For the thread that lets it run.
class KAVIO_API Network {
public:
    /// The two sessions of the platform: purchases are made with the background one.
    enum class Session { ORDINARY, BACKGROUND };

    /// `server` is asked about each request that arrives.
    Network(std::shared_ptr<Timeline> timeline, std::function<Handled(const UrlRequest&)> server);
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    ///@{
    /// A new session; all of them share this network.
    std::shared_ptr<UrlSession> ordinarySession();
    std::shared_ptr<BackgroundUrlSession> backgroundSession();
    ///@}

    /// The device loses its route to the network: what is under way is lost with its connection, ordinary requests
    /// fail, those of the background session wait.
    void cut();
    /// The route is back, and the requests that waited for it leave.
    void restore();
    /// Whether the device has no route.
    bool isCut() const;
    /// What happens to the next request for which nothing has been said yet.
    void next(Fate fate);
    /// Takes back both: everything goes well again.
    void clearFates();
    /// Called after each reply has been handed over.
    void observe(std::function<void(const UrlRequest&, const UrlReply&)> observer);
    /// What happens to all others; null for what always goes well.
    void usually(std::function<Fate(const UrlRequest&)> fate);

    /// From now on requests wait until the test itself answers them, oldest first, those of the background session
    /// before the others. A request leaves when the test says so or answers it; one that was given up before that gets
    /// `UrlError::cancelled` instead of the test's answer.
    void hold();
    ///@{
    /// Ends the oldest open request, with a reply or an error. False if none is open.
    bool answer(UrlReply reply);
    bool answer(int status, std::string body) { return answer({status, std::move(body)}); }
    bool fail(UrlError error);
    bool fail(UrlError::Code code);
    ///@}
    /// Lets the oldest open request leave, so that it can no longer be given up. False if there is none, or it was
    /// given up.
    bool leave();

    /// All requests so far, in order.
    std::vector<UrlRequest> requests(Session session = Session::ORDINARY) const;
    /// How many are not completed, of one session or of both.
    std::size_t open(std::optional<Session> session = std::nullopt) const;
    /// Drops what is open, and tells nobody, as when the program is killed. What has left still reaches the service.
    void forget();
    /// Ends what is open with `UrlError::cancelled`.
    void close();

private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace kavio::test
