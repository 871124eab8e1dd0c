#include "control.h"

#include "faults.h"
#include "parameters.h"

namespace kavio::sandbox {
namespace {

nlohmann::json requestsReply(const Sandbox& sandbox) {
    auto reply = nlohmann::json::array();
    for (const auto& request : sandbox.requests())
        reply.push_back({{"method", request.method},
                         {"host", request.host},
                         {"target", request.target},
                         {"headers", request.headers},
                         {"body", request.body}});
    return reply;
}

struct Action {
    const char* method;
    const char* path;
    nlohmann::json (*run)(Sandbox& sandbox, const nlohmann::json& in);
};

const nlohmann::json done{{"ok", true}};

const Action actions[]{
    {"GET", "/state", [](Sandbox& sandbox, const nlohmann::json&) { return sandbox.state(); }},
    {"GET", "/requests", [](Sandbox& sandbox, const nlohmann::json&) { return requestsReply(sandbox); }},
    {"DELETE", "/requests",
     [](Sandbox& sandbox, const nlohmann::json&) {
         sandbox.clearRequests();
         return done;
     }},
    {"POST", "/faults",
     [](Sandbox& sandbox, const nlohmann::json& in) {
         auto fault = faultFrom(in);
         sandbox.fault(in["path"], std::move(fault));
         return done;
     }},
    {"DELETE", "/faults",
     [](Sandbox& sandbox, const nlohmann::json&) {
         sandbox.clearFaults();
         return done;
     }},
    {"PUT", "/clock",
     [](Sandbox& sandbox, const nlohmann::json& in) {
         checkParameters(in, {{"offsetSeconds", Kind::integer, true}});
         const std::chrono::seconds offset{in["offsetSeconds"].get<std::int64_t>()};
         constexpr std::chrono::years most{100};
         if (offset < -most || offset > most) throw Refusal(400, "offsetSeconds must be within a hundred years");
         sandbox.setClockOffset(offset);
         return done;
     }},
    {"PUT", "/code",
     [](Sandbox& sandbox, const nlohmann::json& in) {
         checkParameters(in, {{"number", Kind::text, true}, {"code", Kind::text, true}});
         sandbox.setCode(in["number"], in["code"]);
         return done;
     }},
    {"DELETE", "/tokens",
     [](Sandbox& sandbox, const nlohmann::json&) {
         sandbox.expireTokens();
         return done;
     }},
};

}  // namespace

Reply control(Sandbox& sandbox, const httplib::Request& request) {
    const auto path = request.path.substr(controlPath.size());
    try {
        for (const auto& action : actions)
            if (action.method == request.method && action.path == path)
                return jsonReply(action.run(sandbox, nlohmann::json::parse(request.body, nullptr, false)));
    } catch (const Refusal& refusal) {
        return jsonReply({{"message", refusal.what()}}, refusal.status);
    }
    return jsonReply({{"message", "no such control: " + request.method + " " + path}}, 404);
}

}  // namespace kavio::sandbox
