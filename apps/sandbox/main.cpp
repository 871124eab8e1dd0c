#include "command_line/numbers.h"
#include "command_line/start.h"
#include "sandbox.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <random>

namespace {

using kavio::command_line::wholeNumber;
using kavio::sandbox::Sandbox;

void print(const std::string& line) {
    fmt::print("{}\n", line);
    std::fflush(stdout);
}

std::string announcement(const Sandbox& sandbox, bool json) {
    const auto file = sandbox.authorityFile().string();
    const auto page = fmt::format("https://localhost:{}/", sandbox.port());
    if (!json) return fmt::format("listening on {}, authority in {}\npage at {}", sandbox.address(), file, page);
    return nlohmann::json{{"event", "listening"},
                          {"address", sandbox.address()},
                          {"authority", file},
                          {"page", page},
                          {"issuerPort", sandbox.issuerPort()}}
        .dump();
}

/// Texts like those that nobody can guess, but the same ones from every copy of the function.
std::function<std::string()> seededText(std::uint64_t seed) {
    return [random = std::mt19937_64(seed)]() mutable { return fmt::format("{:016x}{:016x}", random(), random()); };
}

struct Given {
    Sandbox::Options options;
    bool isJson = false;
    std::int64_t orderStep = options.orderStep.count();
    std::int64_t idleLimit = options.idleLimit.count();
};

void addOptions(CLI::App& app, Given& given) {
    auto& options = given.options;
    app.add_option("--port", options.port, "Port on 127.0.0.1 (default: any free port)")
        ->transform(wholeNumber(0, 65535));
    app.add_option("--issuer-port", options.issuerPort,
                   "Also serve the issuer's pages over plain HTTP (0: any free port)")
        ->transform(wholeNumber(0, 65535));
    app.add_option("--authority", options.authorityFile, "File to write the authority's certificate (PEM) to")
        ->type_name("FILE");
    app.add_option("--api-key", options.apiKey, "The only API key accepted (default: any)");
    app.add_option("--code", options.code, "One-time code for every login")->capture_default_str();
    app.add_option("--order-step-ms", given.orderStep, "How long an order stays in each status, at most a day")
        ->transform(wholeNumber(0, 86'400'000))
        ->capture_default_str();
    app.add_option("--idle-limit", given.idleLimit, "Seconds after which idle connections are closed, at most a day")
        ->transform(wholeNumber(1, 86'400))
        ->capture_default_str();
    app.add_flag("--http2", options.http2, "Speak HTTP/2 instead of HTTP/1.1");
    app.add_option_function<std::uint64_t>(
           "--seed", [&](std::uint64_t seed) { options.unguessableText = seededText(seed); },
           "Make tokens and locators from this number: the same in every run (default: nobody can guess them)")
        ->transform(wholeNumber(0));
    app.add_flag("--json", given.isJson, "Write JSON lines");
    app.set_version_flag("--version", KAVIO_SANDBOX_VERSION);
}

int run(int argc, char** argv) {
    CLI::App app{"A local stand-in for the Kavio payment service, with sample data", "kavio-sandbox"};
    Given given;
    addOptions(app, given);
    if (!kavio::command_line::parse(app, argc, argv)) return 0;
    auto& options = given.options;
    options.orderStep = std::chrono::milliseconds{given.orderStep};
    options.idleLimit = std::chrono::seconds{given.idleLimit};

    options.message = [json = given.isJson](const std::string& line) {
        print(json ? nlohmann::json{{"event", "message"}, {"text", line}}.dump() : line);
    };

    // Blocked before the service starts its threads, so that only the wait below receives them.
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stops, nullptr);

    const Sandbox sandbox(options);
    print(announcement(sandbox, given.isJson));
    int received = 0;
    sigwait(&stops, &received);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return kavio::command_line::start(
        [&] { return run(argc, argv); },
        [](const std::string& sentence) { fmt::print(stderr, "kavio-sandbox: {}\n", sentence); });
}
