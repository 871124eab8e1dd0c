#pragma once

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::sandbox {

using TimePoint = std::chrono::system_clock::time_point;

// Every member of these two has an initialiser, so that a designated list may leave it out without a warning.

struct Options {
    /// Port of the HTTPS service on 127.0.0.1; 0 for a free one.
    std::uint16_t port = 0;
    /// Port of the issuer's pages over plain HTTP, for a web view that does not know our authority; 0 for a free one,
    /// nothing for pages over HTTPS only.
    std::optional<std::uint16_t> issuerPort{};
    /// Where the authority's PEM goes; empty for a file of the sandbox's own, removed at its end.
    std::filesystem::path authorityFile{};
    /// The only API key accepted; empty for any.
    std::string apiKey{};
    /// The one-time code of every login, unless `setCode` says otherwise for a number.
    std::string code = "123456";
    /// How long an order stays in each of its statuses.
    std::chrono::milliseconds orderStep{1000};
    std::chrono::seconds tokenLifetime{std::chrono::hours{24}};
    /// How far a reply of "/time" lets the client's time sample reach.
    std::chrono::seconds sampleLifetime{std::chrono::hours{1}};
    /// How far a signature's time may be from the service's clock, on either side.
    std::chrono::seconds signatureWindow{std::chrono::minutes{5}};
    /// The clock behind everything but certificates and the delays of faults. Called on the service's threads.
    std::function<TimePoint()> clock = std::chrono::system_clock::now;
    /// Receives "code for +49 151234567 is 123456", as the phone would. Called on the service's threads.
    std::function<void(const std::string&)> message{};
};

/// What goes wrong with a request. With `status`, `body` or `drop` the service does not see the request, unless
/// `handled` is set; then it has its effect and only the reply is spoiled.
struct Fault {
    std::optional<int> status{};
    std::optional<std::string> body{};
    /// Only requests of this method; empty for all.
    std::string method{};
    std::chrono::milliseconds delay{0};
    /// Sends this many bytes of the body, announces more, and closes the connection.
    std::optional<std::size_t> cutAfter{};
    /// Pads the body with spaces to this many bytes.
    std::size_t padTo = 0;
    /// Closes the connection before any reply.
    bool drop = false;
    bool handled = false;
    /// How many requests it meets; negative for all.
    int times = 1;
};

/// A request as it arrived. Header names are in lower case; a header with an empty value is not listed, because the
/// HTTP server underneath skips it.
struct Request {
    std::string method;
    std::string host;
    std::string target;  // path and query as sent
    std::map<std::string, std::string> headers;
    std::string body;
};

/// A local stand-in for the payment service, over HTTPS on 127.0.0.1, with state of its own and sample data.
/// Every function may be called on any thread.
class Sandbox {
public:
    using Options = sandbox::Options;

    /// Listens when it returns; throws std::runtime_error when it cannot.
    explicit Sandbox(Options options = {});
    /// Closes every connection, also those that a fault holds up.
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    std::uint16_t port() const;
    /// "127.0.0.1:PORT"
    std::string address() const;
    /// Port of the issuer's pages over plain HTTP; 0 when there is none.
    std::uint16_t issuerPort() const;
    const std::filesystem::path& authorityFile() const;

    /// Adds a fault for a path below "/v1", such as "/orders/123"; '*' stands for any text. Faults that are still in
    /// force are tried in the order in which they were added.
    void fault(const std::string& path, Fault fault);
    void clearFaults();

    /// Moves the service's clock against `Options::clock`. Orders and tokens keep their pace.
    void setClockOffset(std::chrono::seconds offset);
    /// The code of the next logins of a number: country code and number, digits only.
    void setCode(const std::string& number, const std::string& code);
    /// Every session token given out so far is refused from now on.
    void expireTokens();

    /// The requests of clients in the order of their arrival; requests to the control endpoints are not listed.
    std::vector<Request> requests() const;
    void clearRequests();
    /// Accounts with their cards and orders, and "purchases": one entry for each purchase request that had an effect.
    nlohmann::json state() const;

private:
    struct Parts;
    std::unique_ptr<Parts> mParts;
};

}  // namespace kavio::sandbox
