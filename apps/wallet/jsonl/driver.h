#pragma once

#include "host.h"
#include "json/json.h"
#include "jsonl/arguments.h"
#include "reporter.h"

#include <istream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kavio::wallet {

/// One line of input that names an operation.
struct Call {
    std::string_view op;
    std::string facade;
    Arguments arguments;
};

/// The wallet for programs: reads operations as JSON lines, carries them out in order, and writes what is reported as
/// JSON lines. docs/wallet.md is its contract.
class Driver {
public:
    Driver(Host& host, std::istream& input);

    /// Until the end of input.
    void run();

    // What the rows of the operation table are made of.
    void create(std::string facade, std::string apiKey, Kavio::EnvironmentType environment);
    Kavio& kavio(const Call& call);
    void answer(const Call& call, const Json& value);

    void create(const Call& call);
    void release(const Call& call);
    void destroy(const Call& call);
    void dropDelegate(const Call& call);
    void sleep(const Call& call);
    void storeGet(const Call& call);
    void storeSet(const Call& call);

private:
    /// What the application holds of a facade.
    struct Held {
        std::shared_ptr<Reporter> delegate;
        std::unique_ptr<Kavio> kavio;
    };
    /// A facade and the name of one of its callbacks.
    using Callback = std::pair<std::string, std::string_view>;

    void handle(const std::string& line);
    Held& held(const Call& call);

    Host& mHost;
    std::istream& mInput;
    std::map<std::string, Held> mFacades;
    std::map<Callback, std::int64_t> mReports;
};

}  // namespace kavio::wallet
