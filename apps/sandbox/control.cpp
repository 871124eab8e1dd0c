#include "control.h"

#include "options.h"
#include "pages.h"
#include "parameters.h"
#include "paths.h"
#include "report.h"

#include <fmt/format.h>

#include <optional>
#include <vector>

namespace kavio::sandbox {

/// The file page.html, built into the program.
extern const std::string_view pageFile;

namespace {

using nlohmann::json;

const json done{{"ok", true}};

json state(Sandbox& sandbox, const json&) { return sandbox.state(); }
json clock(Sandbox& sandbox, const json&) { return sandbox.clock(); }
json machineList(Sandbox&, const json&) { return machinesReport(); }
json cardList(Sandbox&, const json&) { return cardsReport(); }
json pathList(Sandbox&, const json&) { return pathsReport(); }
json faultList(Sandbox& sandbox, const json&) { return faultsReport(sandbox.faults()); }

const Parameters secretsParameter{{Kind::boolean, {}, {"secrets"}}};

Secrets secretsFrom(const json& in) { return in.value("secrets", false) ? Secrets::shown : Secrets::masked; }

json requestList(Sandbox& sandbox, const json& in) {
    auto reply = json::array();
    for (const auto& exchange : sandbox.exchanges()) reply.push_back(exchangeReport(exchange, secretsFrom(in)));
    return reply;
}

json addFault(Sandbox& sandbox, const json& in) {
    constexpr std::size_t most = 100;
    if (sandbox.faults().size() >= most) throw Refusal(400, fmt::format("there are {} faults already", most));
    auto fault = faultFrom(in);
    const std::string path = in["path"];
    auto reply = done;
    if (const auto warning = faultWarning(path, fault.method); !warning.empty()) reply["warning"] = warning;
    reply["id"] = sandbox.fault(path, std::move(fault));
    return reply;
}

json removeFaults(Sandbox& sandbox, const json& in) {
    if (!in.contains("id"))
        sandbox.clearFaults();
    else if (!sandbox.removeFault(static_cast<std::uint64_t>(in["id"].get<std::int64_t>())))
        throw Refusal(404, "there is no fault with this id");
    return done;
}

json setClock(Sandbox& sandbox, const json& in) {
    if (in.empty()) throw Refusal(400, "offsetSeconds or isStopped is missing");
    if (in.contains("offsetSeconds")) {
        const std::chrono::seconds offset{in["offsetSeconds"].get<std::int64_t>()};
        constexpr std::chrono::years most{100};
        if (offset < -most || offset > most) throw Refusal(400, "offsetSeconds must be within a hundred years");
        sandbox.setClockOffset(offset);
    }
    if (in.contains("isStopped")) sandbox.stopClock(in["isStopped"]);
    return done;
}

json stepClock(Sandbox& sandbox, const json& in) {
    constexpr std::int64_t most = std::chrono::milliseconds{std::chrono::years{1}}.count();
    const auto step = in["stepMs"].get<std::int64_t>();
    if (step < 1 || step > most) throw Refusal(400, fmt::format("stepMs must be 1 to {}", most));
    sandbox.stepClock(std::chrono::milliseconds{step});
    return done;
}

json setCode(Sandbox& sandbox, const json& in) {
    sandbox.setCode(in["number"], in["code"]);
    return done;
}

template <void (Sandbox::*action)()>
json plain(Sandbox& sandbox, const json&) {
    (sandbox.*action)();
    return done;
}

struct Action {
    const char* method;
    const char* path;
    json (*run)(Sandbox& sandbox, const json& in);
    /// Those of a GET or DELETE come in the query, others in the body. Absent where `run` checks them.
    std::optional<Parameters> parameters = Parameters{};
};

const std::vector<Action> actions{
    {"GET", "/state", state},
    {"DELETE", "/state", plain<&Sandbox::reset>},
    {"GET", "/requests", requestList, secretsParameter},
    {"DELETE", "/requests", plain<&Sandbox::clearRequests>},
    {"GET", "/faults", faultList},
    {"POST", "/faults", addFault, std::nullopt},
    {"DELETE", "/faults", removeFaults, Parameters{{Kind::integer, {}, {"id"}}}},
    {"GET", "/clock", clock},
    {"PUT", "/clock", setClock, Parameters{{Kind::integer, {}, {"offsetSeconds"}}, {Kind::boolean, {}, {"isStopped"}}}},
    {"POST", "/clock", stepClock, Parameters{{Kind::integer, {"stepMs"}}}},
    {"PUT", "/code", setCode, Parameters{{Kind::text, {"number", "code"}}}},
    {"DELETE", "/tokens", plain<&Sandbox::expireTokens>},
    {"GET", "/machines", machineList},
    {"GET", "/cards", cardList},
    {"GET", "/paths", pathList},
};

json parametersOf(const httplib::Request& request, const std::optional<Parameters>& parameters) {
    const bool inQuery = request.method == "GET" || request.method == "DELETE";
    auto given = inQuery ? queryParameters(request.params, parameters.value_or(Parameters{}))
                         : json::parse(request.body, nullptr, false);
    if (parameters) checkParameters(given, *parameters);
    return given;
}

}  // namespace

Secrets secretsIn(const httplib::Request& request) { return secretsFrom(parametersOf(request, secretsParameter)); }

Reply control(Sandbox& sandbox, const httplib::Request& request) {
    const auto path = request.path.substr(controlPath.size());
    for (const auto& action : actions)
        if (action.method == request.method && action.path == path)
            return jsonReply(action.run(sandbox, parametersOf(request, action.parameters)));
    throw Refusal(404, "there is no such control: " + request.method + " " + path);
}

Reply pageReply() {
    const auto nonce = randomText();
    Reply reply{.body = filled(pageFile, {{"@nonce@", nonce}}), .type = "text/html; charset=utf-8"};
    reply.headers["Content-Security-Policy"] = fmt::format(
        "default-src 'none'; script-src 'nonce-{0}'; style-src 'nonce-{0}'; connect-src 'self'; img-src data:; "
        "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'; "
        "trusted-types 'none'",
        nonce);
    return reply;
}

}  // namespace kavio::sandbox
