#pragma once

#include "driver/arguments.h"
#include "driver/reporter.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kavio::driver {

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

    /// `write` writes one line of output at once.
    explicit Facades(std::function<void(const std::string& line)> write);

    /// Replaces a facade of the same name.
    void create(std::string name, std::string apiKey, Kavio::EnvironmentType environment);
    /// Throws `Refused` if there is no such facade.
    Held& held(const Call& call);
    /// How often the callback has been called so far.
    std::uint64_t reports(const std::string& facade, std::string_view callback) const;

    void write(const Json& event) const;
    void answer(const Call& call, const Json& value) const;

private:
    /// A facade and the name of one of its callbacks.
    using Callback = std::pair<std::string, std::string_view>;

    const std::function<void(const std::string& line)> mWrite;
    std::map<std::string, Held> mFacades;
    std::map<Callback, std::uint64_t> mReports;
};

}  // namespace kavio::driver
