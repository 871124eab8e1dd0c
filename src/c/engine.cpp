#include "c/engine.h"

#include "driver/arguments.h"
#include "driver/names.h"

#include <kavio/platform/run_loop.h>

#include <pthread.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>

namespace kavio::c {

namespace {

using driver::Arguments;
using driver::Input;
using driver::Refused;

constexpr std::array ofSession{"apiKey", "environment", "facade"};
constexpr std::array ofProcess{"storeDir", "connectTo", "caFile", "kavioKey", "bundleVersion"};

driver::Options optionsIn(const Arguments& in) {
    driver::Options options;
    options.apiKey = in.optional<std::string>("apiKey").value_or(options.apiKey);
    const auto environment = driver::environmentNamed(in.optional<std::string>("environment").value_or("TEST"));
    if (!environment) throw Refused(R"("environment" must be TEST, TESTS or PROD)");
    options.environment = *environment;
    options.withoutFacade = !in.optional<bool>("facade").value_or(true);
    options.storeDirectory = in.optional<std::string>("storeDir").value_or("");
    options.connectTo = in.optional<std::string>("connectTo").value_or("");
    if (!options.connectTo.empty() && !driver::isAddress(options.connectTo))
        throw Refused(R"("connectTo" must be HOST:PORT)");
    options.certificateAuthorities = in.optional<std::string>("caFile").value_or("");
    if (!options.certificateAuthorities.empty() && !std::filesystem::is_regular_file(options.certificateAuthorities))
        throw Refused(R"("caFile" must be the path of a file)");
    options.kavioKey = in.optional<std::string>("kavioKey");
    options.bundleVersion = in.optional<std::string>("bundleVersion");
    return options;
}

void refuseUnknown(const Input& options) {
    for (const auto& [name, value] : options.items()) {
        const auto isNamed = [&name = name](const auto& names) {
            return std::ranges::find(names, name) != names.end();
        };
        if (!isNamed(ofSession) && !isNamed(ofProcess)) throw Refused("\"" + name + "\" is not an option");
    }
}

/// While this exists, no signal is delivered to the calling thread, nor ever to a thread that it starts.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &mBefore);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t mBefore{};
};

/// The thread that makes a run loop is the main thread. It never ends: the library's background threads use the queue
/// for as long as there is a process.
void serve(const driver::Options& options, std::promise<std::shared_ptr<MainQueue>> started) {
    std::shared_ptr<RunLoop> loop;
    try {
        loop = std::make_shared<RunLoop>();
        if (!Platform::install(makeLinuxPlatform(driver::deviceOptions(options, loop))))
            throw Refused("this process already uses Kavio in another way");
        started.set_value(loop);
    } catch (...) {
        started.set_exception(std::current_exception());
        return;
    }
    while (true) {
        try {
            loop->run();
        } catch (...) {  // NOLINT(bugprone-empty-catch): memory ran out, and nobody else could catch it
        }
    }
}

std::shared_ptr<MainQueue> startThread(const driver::Options& options) {
    std::promise<std::shared_ptr<MainQueue>> started;
    auto queue = started.get_future();
    const SignalsBlocked blocked;
    std::thread thread{serve, options, std::move(started)};
    ::pthread_setname_np(thread.native_handle(), "kavio-main");
    thread.detach();
    return queue.get();
}

/// What the process uses since its first session.
struct Engine {
    std::mutex mutex;
    Input options;
    std::shared_ptr<MainQueue> mainQueue;
};

}  // namespace

Start startWith(std::string_view text) {
    // Never destroyed, like the thread.
    static auto& engine = *new Engine;
    const auto given = driver::parseLine(text);
    refuseUnknown(given);
    const Arguments arguments{{given, {}}};
    auto options = optionsIn(arguments);

    const std::lock_guard lock(engine.mutex);
    if (!engine.mainQueue) {
        if (options.storeDirectory.empty()) throw Refused(R"("storeDir" is missing)");
        engine.mainQueue = startThread(options);
        engine.options = given;
        return {std::move(options), engine.mainQueue};
    }
    for (const auto* name : ofProcess) {
        const auto value = given.value(name, Input());
        if (!value.is_null() && value != engine.options.value(name, Input()))
            throw Refused(std::string("\"") + name + "\" differs from that of the process's first session");
    }
    return {std::move(options), engine.mainQueue};
}

}  // namespace kavio::c
