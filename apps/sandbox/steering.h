#pragma once

#include "faults.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// A request as it arrived. Header names are in lower case. A header with an empty value is not listed, because the
/// underlying HTTP server skips it.
struct Request {
    std::string method;
    std::string host;
    std::string target;  // path and query as sent
    std::map<std::string, std::string> headers;
    std::string body;
};

/// Controls a running sandbox: used by tests in its process, and by clients through the control endpoints.
class Steering {
public:
    virtual ~Steering() = default;

    /// Adds a fault for a path below "/v1", such as "/orders/123"; '*' stands for any text. Faults in force are tried
    /// in the order in which they were added.
    virtual void fault(const std::string& path, Fault fault) = 0;
    virtual void clearFaults() = 0;

    /// Shifts the service's clock from `Options::clock`. Orders and tokens are not affected.
    virtual void setClockOffset(std::chrono::seconds offset) = 0;
    /// Sets the code for the next logins with a number: country code and number, digits only.
    virtual void setCode(const std::string& number, const std::string& code) = 0;
    /// Refuses every session token issued so far.
    virtual void expireTokens() = 0;

    /// Clients' requests in order of arrival, except those to the control endpoints.
    virtual std::vector<Request> requests() const = 0;
    virtual void clearRequests() = 0;
    /// Accounts with their cards and orders, and "purchases": one entry for each purchase request that took effect.
    virtual nlohmann::json state() const = 0;
};

}  // namespace kavio::sandbox
