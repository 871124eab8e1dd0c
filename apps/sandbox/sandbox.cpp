#include "sandbox.h"

#include "authority.h"
#include "gallery.h"
#include "issuer.h"
#include "listener.h"
#include "parameters.h"
#include "service.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <mutex>

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

Request recordOf(const httplib::Request& request) {
    Request record{request.method, request.get_header_value("Host"), request.target, {}, request.body};
    for (const auto& [name, value] : request.headers) {
        auto lower = name;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return char(std::tolower(c)); });
        record.headers[lower] = value;
    }
    for (const auto* own : {"remote_addr", "remote_port", "local_addr", "local_port"}) record.headers.erase(own);
    return record;
}

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

void send(Listener& from, const Reply& reply, httplib::Response& response) {
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers) response.set_header(name, value);
    if (response.content_provider_) return;  // a fault's
    if (reply.drip)
        drip(from, reply, response);
    else
        response.set_content(reply.body, reply.type);
}

/// Announces more bytes than it sends and then fails, so that the server closes the connection.
void cut(httplib::Response& response, std::string body, std::size_t after, const std::string& type) {
    body.resize(std::min(after, body.size()));
    const auto announced = body.size() + 1;
    response.set_content_provider(announced, type.c_str(),
                                  [body = std::move(body)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                      if (offset == 0 && !body.empty()) return sink.write(body.data(), body.size());
                                      return false;
                                  });
}

/// The start of the paths that control the sandbox itself. They need no headers and no signature.
constexpr std::string_view controlPath = "/_sandbox";

const nlohmann::json done{{"ok", true}};

nlohmann::json state(Sandbox& sandbox, const nlohmann::json&) { return sandbox.state(); }

nlohmann::json requests(Sandbox& sandbox, const nlohmann::json&) {
    auto reply = nlohmann::json::array();
    for (const auto& request : sandbox.requests())
        reply.push_back({{"method", request.method},
                         {"host", request.host},
                         {"target", request.target},
                         {"headers", request.headers},
                         {"body", request.body}});
    return reply;
}

nlohmann::json addFault(Sandbox& sandbox, const nlohmann::json& in) {
    auto fault = faultFrom(in);
    sandbox.fault(in["path"], std::move(fault));
    return done;
}

nlohmann::json setClock(Sandbox& sandbox, const nlohmann::json& in) {
    checkParameters(in, {{Kind::integer, {"offsetSeconds"}}});
    const std::chrono::seconds offset{in["offsetSeconds"].get<std::int64_t>()};
    constexpr std::chrono::years most{100};
    if (offset < -most || offset > most) throw Refusal(400, "offsetSeconds must be within a hundred years");
    sandbox.setClockOffset(offset);
    return done;
}

nlohmann::json setCode(Sandbox& sandbox, const nlohmann::json& in) {
    checkParameters(in, {{Kind::text, {"number", "code"}}});
    sandbox.setCode(in["number"], in["code"]);
    return done;
}

template <void (Sandbox::*action)()>
nlohmann::json plain(Sandbox& sandbox, const nlohmann::json&) {
    (sandbox.*action)();
    return done;
}

struct Action {
    const char* method;
    const char* path;
    nlohmann::json (*run)(Sandbox& sandbox, const nlohmann::json& in);
};

constexpr Action actions[]{
    {"GET", "/state", state},
    {"GET", "/requests", requests},
    {"DELETE", "/requests", plain<&Sandbox::clearRequests>},
    {"POST", "/faults", addFault},
    {"DELETE", "/faults", plain<&Sandbox::clearFaults>},
    {"PUT", "/clock", setClock},
    {"PUT", "/code", setCode},
    {"DELETE", "/tokens", plain<&Sandbox::expireTokens>},
};

Reply control(Sandbox& sandbox, const httplib::Request& request) {
    const auto path = request.path.substr(controlPath.size());
    try {
        for (const auto& action : actions)
            if (action.method == request.method && action.path == path)
                return jsonReply(action.run(sandbox, nlohmann::json::parse(request.body, nullptr, false)));
    } catch (const Refusal& refusal) {
        return jsonReply({{"message", refusal.what()}}, refusal.status);
    }
    return jsonReply({{"message", "there is no such control: " + request.method + " " + path}}, 404);
}

}  // namespace

struct Sandbox::Parts {
    Parts(Sandbox& owner, Options options)
        : sandbox(owner),
          authorityFile(options.authorityFile, authority.pem()),
          world(std::move(options)),
          service(world) {}

    void listen();
    void serve(Listener& from, const httplib::Request& request, httplib::Response& response);
    /// Only for pages: the API is never served over plain HTTP.
    void serveIssuerPage(Listener& from, const httplib::Request& request, httplib::Response& response);
    void record(const httplib::Request& request);
    /// Runs `work` while no other thread uses the world or the requests.
    template <class Work>
    auto locked(Work work) {
        const std::lock_guard lock(mutex);
        return work();
    }
    Reply answer(const httplib::Request& request);
    void spoil(const Fault& fault, Listener& from, const httplib::Request& request, Reply& reply,
               httplib::Response& response);

    Sandbox& sandbox;
    Authority authority;
    Identity identity = authority.issue(serverNames);
    AuthorityFile authorityFile;
    std::mutex mutex;  // guards world and requests
    World world;
    std::vector<Request> requests;
    Faults faults;
    Service service;
    std::optional<Listener> listener;  // these two last: their threads use everything above
    std::optional<Listener> issuerListener;
};

// Not in the constructor: a request may arrive immediately, and the control endpoints use the whole sandbox.
void Sandbox::Parts::listen() {
    if (world.options.issuerPort) {
        issuerListener.emplace(
            nullptr, *world.options.issuerPort, world.options.idleLimit,
            [this](auto& from, const auto& request, auto& response) { serveIssuerPage(from, request, response); });
    }
    listener.emplace(&identity, world.options.port, world.options.idleLimit,
                     [this](auto& from, const auto& request, auto& response) { serve(from, request, response); });
    const std::lock_guard lock(mutex);
    world.issuerScheme = issuerListener ? "http" : "https";
    world.issuerPort = (issuerListener ? issuerListener : listener)->port();
}

void Sandbox::Parts::serve(Listener& from, const httplib::Request& request, httplib::Response& response) {
    if (request.path.starts_with(controlPath)) return send(from, control(sandbox, request), response);
    record(request);
    const bool isApi = request.path.starts_with(basePath);
    const auto fault = faults.take(request.method, isApi ? request.path.substr(basePath.size()) : request.path);
    const bool replaced = fault && (fault->status || fault->body || fault->drop);
    Reply reply;
    if (!replaced || fault->handled) reply = answer(request);
    if (!from.pause(reply.delay) || reply.isLost) Listener::drop(request);
    if (fault) spoil(*fault, from, request, reply, response);
    send(from, reply, response);
}

void Sandbox::Parts::serveIssuerPage(Listener& from, const httplib::Request& request, httplib::Response& response) {
    record(request);
    const auto reply = request.path.starts_with(issuerPath) ? answer(request) : Reply{.status = 404};
    from.pause(reply.delay);
    send(from, reply, response);
}

void Sandbox::Parts::record(const httplib::Request& request) {
    locked([&] { requests.push_back(recordOf(request)); });
}

Reply Sandbox::Parts::answer(const httplib::Request& request) {
    const std::lock_guard lock(mutex);
    if (request.path.starts_with(issuerPath)) return issuerPage(world, request);
    world.settleOrders();
    return service.handle(request);
}

void Sandbox::Parts::spoil(const Fault& fault, Listener& from, const httplib::Request& request, Reply& reply,
                           httplib::Response& response) {
    if (!from.pause(fault.delay) || fault.drop) Listener::drop(request);
    reply.status = fault.status.value_or(reply.status);
    reply.body = fault.body.value_or(reply.body);
    reply.body.resize(std::max(reply.body.size(), fault.padTo), ' ');
    if (fault.cutAfter) cut(response, reply.body, *fault.cutAfter, reply.type);
}

Sandbox::Sandbox(Options options) : mParts(std::make_unique<Parts>(*this, std::move(options))) { mParts->listen(); }
Sandbox::~Sandbox() = default;

std::uint16_t Sandbox::port() const { return mParts->listener->port(); }
std::string Sandbox::address() const { return fmt::format("127.0.0.1:{}", port()); }
std::uint16_t Sandbox::issuerPort() const { return mParts->issuerListener ? mParts->issuerListener->port() : 0; }
const std::filesystem::path& Sandbox::authorityFile() const { return mParts->authorityFile.path(); }

void Sandbox::fault(const std::string& path, Fault fault) { mParts->faults.add(path, std::move(fault)); }
void Sandbox::clearFaults() {
    mParts->faults.clear();
    mParts->listener->resume();
}

void Sandbox::setClockOffset(std::chrono::seconds offset) {
    mParts->locked([&] { mParts->world.clockOffset = offset; });
}
void Sandbox::setCode(const std::string& number, const std::string& code) {
    mParts->locked([&] { mParts->world.codes[number] = code; });
}
void Sandbox::expireTokens() {
    mParts->locked([&] { mParts->world.sessions.clear(); });
}
std::vector<Request> Sandbox::requests() const {
    return mParts->locked([&] { return mParts->requests; });
}
void Sandbox::clearRequests() {
    mParts->locked([&] { mParts->requests.clear(); });
}
nlohmann::json Sandbox::state() const {
    return mParts->locked([&] {
        mParts->world.settleOrders();
        return stateOf(mParts->world);
    });
}

}  // namespace kavio::sandbox
