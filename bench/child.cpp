#include "child.h"

#include "allocations.h"
#include "exchanges.h"

#include <kavio/kavio.h>
#include <kavio/platform/linux.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>

namespace kavio::bench {
namespace {

double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// A request that needs no session.
UrlRequest timeRequest() {
    UrlRequest request;
    request.url = "https://api.kavio.example/v1/time";
    request.method = "GET";
    request.timeout = std::chrono::seconds(30);
    return request;
}

double costOf(const std::function<long()>& call) {
    const auto before = processorTime();
    if (call() == 0) throw std::runtime_error("The service cannot be reached.");
    return processorTime() - before;
}

double privateBytes() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    double kilobytes = 0;
    for (std::string line; std::getline(rollup, line);) {
        if (line.starts_with("Private_")) kilobytes += std::stod(line.substr(line.find(':') + 1));
    }
    return kilobytes * 1024;
}

Platform platform(const Setup& setup) {
    LinuxPlatformOptions options;
    options.session = {setup.authority(), setup.address};
    options.storeDirectory = setup.folder / "child-store";
    return makeLinuxPlatform(std::move(options));
}

double idleBytes(const Setup& setup) {
    const auto before = privateBytes();
    Platform::install(platform(setup));
    const Kavio facade({}, "key", Kavio::EnvironmentType::PROD);
    return privateBytes() - before;
}

double since(std::chrono::steady_clock::time_point before) {
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - before).count();
}

/// Once the store is there, as it is from the second start of a program on.
double readinessTime(const Setup& setup) {
    const auto before = std::chrono::steady_clock::now();
    Platform::install(platform(setup));
    const Kavio facade({}, "key", Kavio::EnvironmentType::PROD);
    return since(before);
}

double bareReadinessTime() {
    const auto before = std::chrono::steady_clock::now();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const CurlMulti multi(curl_multi_init());
    return since(before);
}

double start(const Setup& setup) {
    Platform::install(platform(setup));
    Kavio facade({}, "key", Kavio::EnvironmentType::PROD);
    facade.login("49", "151234567");
    std::this_thread::sleep_for(std::chrono::seconds(1));  // the request goes out on another thread
    return 0;
}

double figureOf(const std::string& measurement, const Setup& setup) {
    if (measurement == "library-call") {
        LibraryExchange exchange(setup);
        return costOf([&] { return exchange.run(timeRequest()); });
    }
    if (measurement == "bare-call") {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        BareExchange exchange(setup, timeRequest());
        return costOf([&] { return exchange.run(); });
    }
    if (measurement == "idle") return idleBytes(setup);
    if (measurement == "start") return start(setup);
    if (measurement == "ready") return readinessTime(setup);
    if (measurement == "bare-ready") return bareReadinessTime();
    if (measurement == "text") return residenceOfLargeReply().text;
    if (measurement == "peak") return residenceOfLargeReply().peak;
    if (measurement == "stays") return residenceOfLargeReply().stays;
    throw std::invalid_argument(measurement);
}

using Pipe = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

Pipe startChild(const std::string& measurement, const Setup& setup) {
    const auto command = "exec " + std::filesystem::read_symlink("/proc/self/exe").string() + ' ' + childFlag + ' ' +
                         measurement + ' ' + setup.address + ' ' + setup.folder.string();
    Pipe child(::popen(command.c_str(), "r"), &::pclose);
    if (!child) throw std::runtime_error("No child process can be started.");
    return child;
}

}  // namespace

int runChild(const std::string& measurement, const Setup& setup) {
    std::printf("%.0f\n", figureOf(measurement, setup));
    return 0;
}

double measureInChild(const std::string& measurement, const Setup& setup) {
    constexpr int runs = 10;
    double best = std::numeric_limits<double>::infinity();
    for (int run = 0; run < runs; ++run) {
        const auto child = startChild(measurement, setup);
        double figure = 0;
        if (std::fscanf(child.get(), "%lf", &figure) != 1) throw std::runtime_error(measurement + " failed.");
        best = std::min(best, figure);
    }
    return best;
}

double timeToFirstRequest(const Setup& setup) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0 || ::listen(listener, 1) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("No port can be opened.");
    }
    const auto before = std::chrono::steady_clock::now();
    const auto child = startChild("start", {"127.0.0.1:" + std::to_string(ntohs(address.sin_port)), setup.folder});
    const int connection = ::accept(listener, nullptr, nullptr);
    char byte = 0;
    const bool hasBegun = ::read(connection, &byte, 1) == 1;
    const std::chrono::duration<double, std::nano> passed = std::chrono::steady_clock::now() - before;
    ::close(connection);
    ::close(listener);
    if (!hasBegun) throw std::runtime_error("The child sent nothing.");
    return passed.count();
}

}  // namespace kavio::bench
