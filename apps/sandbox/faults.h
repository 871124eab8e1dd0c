#pragma once

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstddef>
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

/// The faults currently in force.
class Faults {
public:
    void add(const std::string& path, Fault fault);
    void clear();
    /// The first fault that applies to a request; counts it as applied.
    std::optional<Fault> take(const std::string& method, const std::string& path);

private:
    struct Entry {
        std::string path;
        Fault fault;
    };
    std::mutex mMutex;
    std::vector<Entry> mEntries;
};

/// Reads a fault as sent to the control endpoint; throws Refusal.
Fault faultFrom(const nlohmann::json& object);

}  // namespace kavio::sandbox
