#pragma once

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// What goes wrong with a request. With `status`, `body` or `drop` the service does not see the request, unless
/// `handled` is set: then the request takes effect and only the reply is spoiled. Every member has an initialiser, so
/// that a designated initialiser list may leave it out without a warning.
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
    /// Closes the connection without a reply.
    bool drop = false;
    bool handled = false;
    /// How many requests it applies to; negative for all.
    int times = 1;
};

/// A fault and what has become of it.
struct SetFault {
    std::uint64_t id = 0;
    std::string path;
    Fault fault;
    int hits = 0;                // requests that it has applied to
    std::uint64_t requests = 0;  // all requests since it was set
    bool isSpent() const { return fault.times > 0 && hits >= fault.times; }
};

/// The faults currently in force.
class Faults {
public:
    std::uint64_t add(const std::string& path, Fault fault);
    void clear();
    /// False if there is none with this number.
    bool remove(std::uint64_t id);
    /// The first fault that applies to a request; counts it as applied.
    std::optional<SetFault> take(const std::string& method, const std::string& path);
    /// Those in force and the last of those that are spent, oldest first.
    std::vector<SetFault> all() const;
    /// How many are in force.
    std::size_t size() const;

private:
    static constexpr std::size_t mostSpent = 30;

    mutable std::mutex mMutex;
    std::vector<SetFault> mInForce;  // `requests` is the number of those before it was set
    std::deque<SetFault> mSpent;
    std::uint64_t mLastId = 0;
    std::uint64_t mRequests = 0;
};

/// Reads a fault as sent to the control endpoint; throws Refusal.
Fault faultFrom(const nlohmann::json& object);

}  // namespace kavio::sandbox
