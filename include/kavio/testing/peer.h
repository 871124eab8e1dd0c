#pragma once

#include <kavio/export.h>
#include <kavio/platform/url_session.h>
#include <kavio/testing/raw_server.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kavio::test {

/// How a session reaches a server of the tests.
struct Reach {
    /// PEM file of the only authority that it trusts.
    std::filesystem::path authorities;
    /// "HOST:PORT" that every connection goes to, whatever host the URL names; the certificate is still checked
    /// against the URL's own. Empty for the host that the URL names.
    std::string address;
};

/// Where the tests' service is, as far as URLs say.
inline constexpr const char* serviceUrl = "https://service.test";
///@{
/// The only authority that vouches for that service, and how to reach a server that has its identity.
KAVIO_API const Authority& serviceAuthority();
KAVIO_API Reach reaching(const std::string& address);
///@}

/// A server that can prove that it is the service.
struct KAVIO_API ServiceServer : RawServer {
    /// As a `RawServer`, with the service's identity.
    explicit ServiceServer(Script script, std::string protocol = "http/1.1");
};

/// An address on this machine where nobody listens. The port is bound, so that nobody else is given it.
KAVIO_API std::string abandonedAddress();

/// What the service does with a request.
enum class Conduct {
    ANSWERS,  ///< with the reply
    CUTS,     ///< ends the connection within the reply
    DROPS,    ///< ends the connection when it has read the request
    STALLS,   ///< has read the request, and never answers
    SILENT,   ///< takes the connection, but nothing can be sent on it
    GONE,     ///< nobody listens any more; for good
};

/// A service, and the sessions that are to reach it. The promises that it takes no bytes to judge are judged with it.
class KAVIO_API Peer {
public:
    virtual ~Peer() = default;
    ///@{
    /// Sessions of their own; null if the port has none.
    virtual std::shared_ptr<UrlSession> makeSession() = 0;
    virtual std::shared_ptr<BackgroundUrlSession> makeBackgroundSession() = 0;
    ///@}
    /// What happens to requests from now on.
    virtual void serve(Conduct conduct, UrlReply reply = {200, "ok"}) = 0;
    /// The whole requests that have reached the service: "METHOD TARGET BODY", without a body "METHOD TARGET".
    virtual std::vector<std::string> seen() const = 0;
    /// Lets happen what is under way until `done`; false if that takes too long.
    virtual bool runUntil(const std::function<bool()>& done) = 0;
    ///@{
    /// The device's route to the network, which is also the one to this service.
    virtual void loseRoute() = 0;
    virtual void makeRoute() = 0;
    ///@}
};

/// Sessions that reach a service through real connections.
struct SessionFactory {
    ///@{
    /// Makes a session; unset if the port has none.
    std::function<std::shared_ptr<UrlSession>(const Reach&)> session{};
    std::function<std::shared_ptr<BackgroundUrlSession>(const Reach&)> backgroundSession{};
    ///@}
    /// Gives the device a route to the network. At first there is none where the tests are run without.
    std::function<void()> makeRoute{};
};
/// A service on a socket of this machine, with sessions of `factory`.
KAVIO_API std::unique_ptr<Peer> makeRawPeer(SessionFactory factory);

}  // namespace kavio::test
