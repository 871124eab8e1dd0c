#include "sandbox.h"

#include "authority.h"
#include "backend.h"
#include "gallery.h"
#include "listener.h"
#include "parameters.h"
#include "service.h"

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
    if (!from.pause(reply.delay) || reply.isLost) Listener::drop(request);
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers) response.set_header(name, value);
    if (reply.cutAfter)
        cut(reply, response);
    else if (reply.drip)
        drip(from, reply, response);
    else
        response.set_content(reply.body, reply.type);
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
        : sandbox(owner), authorityFile(options.authorityFile, authority.pem()), backend(std::move(options)) {}

    void listen();
    void serve(Listener& from, const httplib::Request& request, httplib::Response& response);

    Sandbox& sandbox;
    Authority authority;
    Identity identity = authority.issue(serverNames);
    AuthorityFile authorityFile;
    Backend backend;
    std::optional<Listener> listener;  // these two last: their threads use everything above
    std::optional<Listener> issuerListener;
};

// Not in the constructor: a request may arrive immediately, and the control endpoints use the whole sandbox.
void Sandbox::Parts::listen() {
    const auto& options = backend.use([](World & world) -> auto& { return world.options; });
    // Only for pages: the API is never served over plain HTTP.
    if (options.issuerPort) {
        issuerListener.emplace(nullptr, *options.issuerPort, options.idleLimit,
                               [this](auto& from, const auto& request, auto& response) {
                                   send(from, request, backend.handleIssuerPage(request), response);
                               });
    }
    listener.emplace(&identity, options.port, options.idleLimit,
                     [this](auto& from, const auto& request, auto& response) { serve(from, request, response); });
    backend.use([this](World& world) {
        world.issuerScheme = issuerListener ? "http" : "https";
        world.issuerPort = (issuerListener ? issuerListener : listener)->port();
    });
}

void Sandbox::Parts::serve(Listener& from, const httplib::Request& request, httplib::Response& response) {
    const bool isControl = request.path.starts_with(controlPath);
    send(from, request, isControl ? control(sandbox, request) : backend.handle(request), response);
}

Sandbox::Sandbox(Options options) : mParts(std::make_unique<Parts>(*this, std::move(options))) { mParts->listen(); }
Sandbox::~Sandbox() = default;

std::uint16_t Sandbox::port() const { return mParts->listener->port(); }
std::string Sandbox::address() const { return fmt::format("127.0.0.1:{}", port()); }
std::uint16_t Sandbox::issuerPort() const { return mParts->issuerListener ? mParts->issuerListener->port() : 0; }
const std::filesystem::path& Sandbox::authorityFile() const { return mParts->authorityFile.path(); }

void Sandbox::fault(const std::string& path, Fault fault) { mParts->backend.faults().add(path, std::move(fault)); }
void Sandbox::clearFaults() {
    mParts->backend.faults().clear();
    mParts->listener->resume();
}

void Sandbox::setClockOffset(std::chrono::seconds offset) {
    mParts->backend.use([&](World& world) { world.clockOffset = offset; });
}
void Sandbox::setCode(const std::string& number, const std::string& code) {
    mParts->backend.use([&](World& world) { world.codes[number] = code; });
}
void Sandbox::expireTokens() {
    mParts->backend.use([](World& world) { world.sessions.clear(); });
}
std::vector<Request> Sandbox::requests() const { return mParts->backend.requests(); }
void Sandbox::clearRequests() { mParts->backend.clearRequests(); }
nlohmann::json Sandbox::state() const {
    return mParts->backend.use([](World& world) {
        world.settleOrders();
        return stateOf(world);
    });
}

}  // namespace kavio::sandbox
