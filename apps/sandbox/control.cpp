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

json state(Controlled& service, const json&) { return service.state(); }
json clock(Controlled& service, const json&) { return service.clock(); }
json machineList(Controlled&, const json&) { return machinesReport(); }
json cardList(Controlled&, const json&) { return cardsReport(); }
json pathList(Controlled&, const json&) { return pathsReport(); }
json faultList(Controlled& service, const json&) { return faultsReport(service.faults()); }

const Parameters secretsParameter{{Kind::boolean, {}, {"secrets"}}};

Secrets secretsFrom(const json& in) { return in.value("secrets", false) ? Secrets::shown : Secrets::masked; }

json requestList(Controlled& service, const json& in) {
    auto reply = json::array();
    for (const auto& exchange : service.exchanges()) reply.push_back(exchangeReport(exchange, secretsFrom(in)));
    return reply;
}

json addFault(Controlled& service, const json& in) {
    constexpr std::size_t most = 100;
    if (service.faults().size() >= most) throw Refusal(400, fmt::format("there are {} faults already", most));
    auto fault = faultFrom(in);
    const std::string path = in["path"];
    auto reply = done;
    if (const auto warning = faultWarning(path, fault.method); !warning.empty()) reply["warning"] = warning;
    reply["id"] = service.fault(path, std::move(fault));
    return reply;
}

json removeFaults(Controlled& service, const json& in) {
    if (!in.contains("id"))
        service.clearFaults();
    else if (!service.removeFault(static_cast<std::uint64_t>(in["id"].get<std::int64_t>())))
        throw Refusal(404, "there is no fault with this id");
    return done;
}

json setClock(Controlled& service, const json& in) {
    if (in.empty()) throw Refusal(400, "offsetSeconds or isStopped is missing");
    if (in.contains("offsetSeconds")) {
        const std::chrono::seconds offset{in["offsetSeconds"].get<std::int64_t>()};
        constexpr std::chrono::years most{100};
        if (offset < -most || offset > most) throw Refusal(400, "offsetSeconds must be within a hundred years");
        service.setClockOffset(offset);
    }
    if (in.contains("isStopped")) service.stopClock(in["isStopped"]);
    return done;
}

json stepClock(Controlled& service, const json& in) {
    constexpr std::int64_t most = std::chrono::milliseconds{std::chrono::years{1}}.count();
    const auto step = in["stepMs"].get<std::int64_t>();
    if (step < 1 || step > most) throw Refusal(400, fmt::format("stepMs must be 1 to {}", most));
    service.stepClock(std::chrono::milliseconds{step});
    return done;
}

json setCode(Controlled& service, const json& in) {
    service.setCode(in["number"], in["code"]);
    return done;
}

template <void (Controlled::*action)()>
json plain(Controlled& service, const json&) {
    (service.*action)();
    return done;
}

struct Action {
    const char* method;
    const char* path;
    json (*run)(Controlled& service, const json& in);
    /// Those of a GET or DELETE come in the query, others in the body. Absent where `run` checks them.
    std::optional<Parameters> parameters = Parameters{};
};

const std::vector<Action> actions{
    {"GET", "/state", state},
    {"DELETE", "/state", plain<&Controlled::reset>},
    {"GET", "/requests", requestList, secretsParameter},
    {"DELETE", "/requests", plain<&Controlled::clearRequests>},
    {"GET", "/faults", faultList},
    {"POST", "/faults", addFault, std::nullopt},
    {"DELETE", "/faults", removeFaults, Parameters{{Kind::integer, {}, {"id"}}}},
    {"GET", "/clock", clock},
    {"PUT", "/clock", setClock, Parameters{{Kind::integer, {}, {"offsetSeconds"}}, {Kind::boolean, {}, {"isStopped"}}}},
    {"POST", "/clock", stepClock, Parameters{{Kind::integer, {"stepMs"}}}},
    {"PUT", "/code", setCode, Parameters{{Kind::text, {"number", "code"}}}},
    {"DELETE", "/tokens", plain<&Controlled::expireTokens>},
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

Reply control(Controlled& service, const httplib::Request& request) {
    const auto path = request.path.substr(controlPath.size());
    for (const auto& action : actions)
        if (action.method == request.method && action.path == path)
            return jsonReply(action.run(service, parametersOf(request, action.parameters)));
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
