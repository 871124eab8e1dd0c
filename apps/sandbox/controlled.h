#pragma once

#include "faults.h"
#include "request.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kavio::sandbox {

class Backend;
class Journal;
struct Exchange;

/// What can be done to the service from outside. Safe from any thread.
class Controlled {
public:
    /// `resume` ends the delays under way.
    Controlled(Backend& backend, Journal& journal, std::function<void()> resume);

    /// Adds a fault for a path below "/v1", such as "/orders/123"; '*' stands for any text. Faults in force are tried
    /// in the order in which they were added.
    /// Returns the fault's number.
    std::uint64_t fault(const std::string& path, Fault fault);
    void clearFaults();
    /// False if there is no fault with this number.
    bool removeFault(std::uint64_t id);
    /// Those in force and the last of those that are spent.
    std::vector<SetFault> faults() const;

    /// Shifts the service's clock from `Options::clock`. Orders and tokens are not affected.
    void setClockOffset(std::chrono::seconds offset);
    /// Stops the time of orders and tokens, or lets it go on from there.
    void stopClock(bool isStopped);
    /// Moves the time of orders and tokens on, whether it is stopped or not.
    void stepClock(std::chrono::milliseconds step);
    /// "now", as clients see it, and how the clock has been set.
    nlohmann::json clock() const;
    /// Sets the code for the next logins with a number: country code and number, digits only.
    void setCode(const std::string& number, const std::string& code);
    /// Refuses every session token issued so far.
    void expireTokens();

    /// Clients' last requests in order of arrival, except those to the control endpoints; long ones are cut.
    std::vector<Request> requests() const;
    /// The same with what became of them.
    std::vector<Exchange> exchanges() const;
    void clearRequests();
    /// Accounts with their cards and orders, and "purchases": one entry for each purchase request that took effect.
    nlohmann::json state() const;
    /// Makes everything as it was at the start: no accounts, orders, sessions, requests or faults, the clock as it
    /// runs.
    void reset();

private:
    Backend& mBackend;
    Journal& mJournal;
    std::function<void()> mResume;
};

}  // namespace kavio::sandbox
