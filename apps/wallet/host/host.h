#pragma once

#include "host/options.h"

#include <chrono>
#include <functional>
#include <memory>

namespace kavio::wallet {

/// The program as the library's host application: it installs the platform, and runs the main queue.
class Host {
public:
    virtual ~Host() = default;
    /// Runs the main queue until `done` returns true, which is asked after each piece of work, or until `limit` has
    /// passed. Returns the last answer of `done`.
    virtual bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) = 0;
};

/// Without windows. Must be made on the main thread, before anything else in the library is used.
std::unique_ptr<Host> makeTerminalHost(const Options& options);

/// With a window for 3-D Secure pages. Null if none can be opened; `reason` then says why.
std::unique_ptr<Host> makeWindowHost(const Options& options, std::string& reason);

}  // namespace kavio::wallet
