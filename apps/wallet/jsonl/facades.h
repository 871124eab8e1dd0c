#pragma once

#include "json/arguments.h"
#include "json/reporter.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kavio::wallet {

/// What the driver needs of the program around it.
struct Program {
    /// Runs the main queue until `done` returns true, which is asked after each piece of work, or until `limit` has
    /// passed. Returns the last answer of `done`.
    std::function<bool(const std::function<bool()>& done, std::chrono::milliseconds limit)> runUntil;
    /// Writes one line of output at once.
    std::function<void(const std::string& line)> write;
};

/// One line of input that names an operation.
struct Call {
    std::string_view op;
    std::string facade;
    Arguments arguments;
};

/// The facades that lines name, and how often each has reported. Operations act on these.
class Facades {
public:
    /// What the application holds of a facade.
    struct Held {
        std::shared_ptr<Reporter> delegate;
        std::unique_ptr<Kavio> kavio;
    };

    explicit Facades(Program theProgram);

    /// Replaces a facade of the same name.
    void create(std::string name, std::string apiKey, Kavio::EnvironmentType environment);
    /// Throws `Refused` if there is no such facade.
    Held& held(const Call& call);
    /// How often the callback has been called so far.
    std::uint64_t reports(const std::string& facade, std::string_view callback) const;

    void write(const Json& event) const;
    void answer(const Call& call, const Json& value) const;

    const Program program;

private:
    /// A facade and the name of one of its callbacks.
    using Callback = std::pair<std::string, std::string_view>;

    std::map<std::string, Held> mFacades;
    std::map<Callback, std::uint64_t> mReports;
};

}  // namespace kavio::wallet
