#pragma once

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kavio::sandbox {

// Every member has an initialiser, so that a designated list may leave it out without a warning.

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

/// The faults in force.
class Faults {
public:
    void add(const std::string& path, Fault fault);
    void clear();
    /// The first fault that a request meets; counts it as met.
    std::optional<Fault> take(const std::string& method, const std::string& path);

private:
    struct Entry {
        std::string path;
        Fault fault;
    };
    std::mutex mMutex;
    std::vector<Entry> mEntries;
};

/// A fault as the control endpoint takes it; throws Refusal.
Fault faultFrom(const nlohmann::json& object);

}  // namespace kavio::sandbox
