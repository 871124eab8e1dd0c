#include "sandbox.h"

#include "authority.h"
#include "backend.h"
#include "bell.h"
#include "control.h"
#include "events.h"
#include "gallery.h"
#include "guard.h"
#include "issuer.h"
#include "journal.h"
#include "listener.h"
#include "service.h"
#include "verdict.h"

#include <fmt/format.h>
#include <unistd.h>

#include <fstream>
#include <optional>

namespace kavio::sandbox {
namespace {

const std::vector<std::string> serverNames{"api.kavio.example",
                                           "api-qa1.kavio.example",
                                           "api-qa2.kavio.example",
                                           "api-qa3.kavio.example",
                                           "api-qa4.kavio.example",
                                           "api-qa2-stable.kavio.example",
                                           "api-il.kavio.example",
                                           "api-de.kavio.example",
                                           "acs.kavio.example",
                                           std::string(schemeHost),
                                           std::string(bankHost),
                                           std::string(longHost),
                                           "localhost",
                                           "127.0.0.1"};

/// The file with the authority's certificate; removed at the end if its name was not given.
class AuthorityFile {
public:
    AuthorityFile(std::filesystem::path path, const std::string& pem) : mPath(std::move(path)), mOwned(mPath.empty()) {
        if (mOwned) {
            auto name = (std::filesystem::temp_directory_path() / "kavio-sandbox-XXXXXX.pem").string();
            const int file = mkstemps(name.data(), int(std::string_view(".pem").size()));
            if (file < 0) throw std::runtime_error("cannot write " + name);
            close(file);
            mPath = name;
        }
        if (!(std::ofstream(mPath) << pem << std::flush)) throw std::runtime_error("cannot write " + mPath.string());
    }
    ~AuthorityFile() {
        std::error_code ignored;
        if (mOwned) std::filesystem::remove(mPath, ignored);
    }
    AuthorityFile(const AuthorityFile&) = delete;
    AuthorityFile& operator=(const AuthorityFile&) = delete;

    const std::filesystem::path& path() const { return mPath; }

private:
    std::filesystem::path mPath;
    bool mOwned;
};

/// Sends the body as it is, in a few pieces with a pause before each.
void drip(Listener& from, const Reply& reply, httplib::Response& response) {
    constexpr std::size_t pieces = 10;
    response.set_content_provider(
        reply.body.size(), reply.type.c_str(),
        [&from, body = reply.body, pause = *reply.drip](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            const auto piece = std::string_view(body).substr(offset, body.size() / pieces + 1);
            return from.pause(pause) && sink.write(piece.data(), piece.size());
        });
}

/// Announces more bytes than it sends and then fails, so that the server closes the connection.
void cut(const Reply& reply, httplib::Response& response) {
    auto body = reply.body.substr(0, *reply.cutAfter);
    const auto announced = body.size() + 1;
    response.set_content_provider(announced, reply.type.c_str(),
                                  [body = std::move(body)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                      if (offset == 0 && !body.empty()) return sink.write(body.data(), body.size());
                                      return false;
                                  });
}

void send(Listener& from, const httplib::Request& request, const Reply& reply, httplib::Response& response) {
    const bool isLost = !from.pause(reply.delay) || reply.isLost;
    if (isLost && Listener::drop(request)) return;
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers) response.set_header(name, value);
    if (reply.cutAfter)
        cut(reply, response);
    else if (reply.drip)
        drip(from, reply, response);
    else
        response.set_content(reply.body, reply.type);
}

/// A page of another site may show or read nothing that the sandbox says about itself, and nothing of it is kept.
void keepToOurselves(httplib::Response& response) {
    response.set_header("Cache-Control", "no-store");
    response.set_header("Cross-Origin-Resource-Policy", "same-origin");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("X-Content-Type-Options", "nosniff");
}

/// Whether a request is for something that only browsers on this machine ask for.
bool isForBrowser(std::string_view path, const httplib::Request& request) {
    return request.path == path && request.method == "GET" && isAtOneOf({"localhost", "127.0.0.1"}, request);
}

/// Whether the signature of a request is looked at.
bool isSigned(const httplib::Request& request) {
    return request.path.starts_with(basePath) || request.path.starts_with(fmt::format("{}fingerprint/", issuerPath));
}

}  // namespace

struct Sandbox::Parts {
    explicit Parts(Options options)
        : authorityFile(options.authorityFile, authority.pem()), backend(std::move(options), Backend::Recording::off) {}
    ~Parts() { bell.close(); }

    void listen();
    void serve(Listener& from, const httplib::Request& request, httplib::Response& response);
    void serveControl(Listener& from, const httplib::Request& request, httplib::Response& response);
    /// Answers a client by `handle`, and notes that in the journal.
    void serveClient(Listener& from, const httplib::Request& request, httplib::Response& response,
                     Reply (Backend::*handle)(const httplib::Request&));
    std::optional<Verdict> verdict(const httplib::Request& request);

    Authority authority;
    Identity identity = authority.issue(serverNames);
    AuthorityFile authorityFile;
    Backend backend;
    Journal journal;
    Bell bell;
    Controlled controlled{backend, journal, [this] { listener->resume(); }};
    Events events{backend, journal, bell};
    std::optional<Listener> listener;  // these two last: their threads use everything above
    std::optional<Listener> issuerListener;
};

// Not in the constructor: a request may arrive immediately, and the control endpoints use the whole sandbox.
void Sandbox::Parts::listen() {
    const auto& options = backend.use([](World & world) -> auto& { return world.options; });
    // Only for pages: the API is never served over plain HTTP.
    if (options.issuerPort) {
        issuerListener.emplace(Listener::Protocol::http, nullptr, *options.issuerPort, options.idleLimit,
                               [this](auto& from, const auto& request, auto& response) {
                                   serveClient(from, request, response, &Backend::handleIssuerPage);
                               });
    }
    listener.emplace(options.http2 ? Listener::Protocol::http2 : Listener::Protocol::https, &identity, options.port,
                     options.idleLimit,
                     [this](auto& from, const auto& request, auto& response) { serve(from, request, response); });
    backend.use([this](World& world) {
        world.issuerScheme = issuerListener ? "http" : "https";
        world.issuerPort = (issuerListener ? issuerListener : listener)->port();
    });
}

void Sandbox::Parts::serve(Listener& from, const httplib::Request& request, httplib::Response& response) {
    if (request.path.starts_with(controlPath)) return serveControl(from, request, response);
    if (isForBrowser("/", request)) {
        keepToOurselves(response);
        return send(from, request, pageReply(), response);
    }
    // Browsers ask for it by themselves, which is of no interest and must not meet a fault.
    if (isForBrowser("/favicon.ico", request)) return send(from, request, {.status = 204}, response);
    serveClient(from, request, response, &Backend::handle);
}

void Sandbox::Parts::serveControl(Listener& from, const httplib::Request& request, httplib::Response& response) {
    keepToOurselves(response);
    Reply reply;
    try {
        if (!isAtOneOf(serverNames, request)) throw Refusal(403, "the sandbox has no such host name");
        refuseOtherSites(request);
        if (request.method == "GET" && request.path == fmt::format("{}/events", controlPath))
            return events.stream(secretsIn(request), response);
        reply = control(controlled, request);
    } catch (const Refusal& refusal) {
        reply = jsonReply({{"message", refusal.what()}}, refusal.status);
    }
    if (request.method != "GET") bell.ring();
    send(from, request, reply, response);
}

void Sandbox::Parts::serveClient(Listener& from, const httplib::Request& request, httplib::Response& response,
                                 Reply (Backend::*handle)(const httplib::Request&)) {
    const auto number = journal.begin(recordOf(request), backend.use([](World& world) { return world.now(); }));
    bell.ring();
    const auto judged = verdict(request);  // before a fault or a reset changes anything
    const auto reply = (backend.*handle)(request);
    journal.end(number, reply, judged);
    bell.ring();
    send(from, request, reply, response);
}

std::optional<Verdict> Sandbox::Parts::verdict(const httplib::Request& request) {
    if (!isSigned(request)) return std::nullopt;
    const auto [now, window] =
        backend.use([](World& world) { return std::pair(world.now(), world.options.signatureWindow); });
    return verdictOn(request, now, window);
}

Sandbox::Sandbox(Options options) : Sandbox(std::make_unique<Parts>(std::move(options))) { mParts->listen(); }
Sandbox::Sandbox(std::unique_ptr<Parts> parts) : Controlled(parts->controlled), mParts(std::move(parts)) {}
Sandbox::~Sandbox() = default;

std::uint16_t Sandbox::port() const { return mParts->listener->port(); }
std::string Sandbox::address() const { return fmt::format("127.0.0.1:{}", port()); }
std::uint16_t Sandbox::issuerPort() const { return mParts->issuerListener ? mParts->issuerListener->port() : 0; }
const std::filesystem::path& Sandbox::authorityFile() const { return mParts->authorityFile.path(); }

}  // namespace kavio::sandbox
