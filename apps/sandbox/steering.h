#pragma once

#include "faults.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// A request as it arrived. Header names are in lower case; a header with an empty value is not listed, because the
/// HTTP server underneath skips it.
struct Request {
    std::string method;
    std::string host;
    std::string target;  // path and query as sent
    std::map<std::string, std::string> headers;
    std::string body;
};

/// What can be done to a sandbox while it runs, by tests in its process and by clients through the control endpoints.
class Steering {
public:
    virtual ~Steering() = default;

    /// Adds a fault for a path below "/v1", such as "/orders/123"; '*' stands for any text. Faults that are still in
    /// force are tried in the order in which they were added.
    virtual void fault(const std::string& path, Fault fault) = 0;
    virtual void clearFaults() = 0;

    /// Moves the service's clock against `Options::clock`. Orders and tokens keep their pace.
    virtual void setClockOffset(std::chrono::seconds offset) = 0;
    /// The code of the next logins of a number: country code and number, digits only.
    virtual void setCode(const std::string& number, const std::string& code) = 0;
    /// Every session token given out so far is refused from now on.
    virtual void expireTokens() = 0;

    /// The requests of clients in the order of their arrival; requests to the control endpoints are not listed.
    virtual std::vector<Request> requests() const = 0;
    virtual void clearRequests() = 0;
    /// Accounts with their cards and orders, and "purchases": one entry for each purchase request that had an effect.
    virtual nlohmann::json state() const = 0;
};

}  // namespace kavio::sandbox
