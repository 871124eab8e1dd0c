#include "control.h"

#include "faults.h"
#include "parameters.h"

namespace kavio::sandbox {
namespace {

const nlohmann::json done{{"ok", true}};

nlohmann::json state(Steering& steering, const nlohmann::json&) { return steering.state(); }

nlohmann::json requests(Steering& steering, const nlohmann::json&) {
    auto reply = nlohmann::json::array();
    for (const auto& request : steering.requests())
        reply.push_back({{"method", request.method},
                         {"host", request.host},
                         {"target", request.target},
                         {"headers", request.headers},
                         {"body", request.body}});
    return reply;
}

nlohmann::json addFault(Steering& steering, const nlohmann::json& in) {
    auto fault = faultFrom(in);
    steering.fault(in["path"], std::move(fault));
    return done;
}

nlohmann::json setClock(Steering& steering, const nlohmann::json& in) {
    checkParameters(in, {{Kind::integer, {"offsetSeconds"}}});
    const std::chrono::seconds offset{in["offsetSeconds"].get<std::int64_t>()};
    constexpr std::chrono::years most{100};
    if (offset < -most || offset > most) throw Refusal(400, "offsetSeconds must be within a hundred years");
    steering.setClockOffset(offset);
    return done;
}

nlohmann::json setCode(Steering& steering, const nlohmann::json& in) {
    checkParameters(in, {{Kind::text, {"number", "code"}}});
    steering.setCode(in["number"], in["code"]);
    return done;
}

template <void (Steering::*action)()>
nlohmann::json plain(Steering& steering, const nlohmann::json&) {
    (steering.*action)();
    return done;
}

struct Action {
    const char* method;
    const char* path;
    nlohmann::json (*run)(Steering& steering, const nlohmann::json& in);
};

constexpr Action actions[]{
    {"GET", "/state", state},
    {"GET", "/requests", requests},
    {"DELETE", "/requests", plain<&Steering::clearRequests>},
    {"POST", "/faults", addFault},
    {"DELETE", "/faults", plain<&Steering::clearFaults>},
    {"PUT", "/clock", setClock},
    {"PUT", "/code", setCode},
    {"DELETE", "/tokens", plain<&Steering::expireTokens>},
};

}  // namespace

Reply control(Steering& steering, const httplib::Request& request) {
    const auto path = request.path.substr(controlPath.size());
    try {
        for (const auto& action : actions)
            if (action.method == request.method && action.path == path)
                return jsonReply(action.run(steering, nlohmann::json::parse(request.body, nullptr, false)));
    } catch (const Refusal& refusal) {
        return jsonReply({{"message", refusal.what()}}, refusal.status);
    }
    return jsonReply({{"message", "there is no such control: " + request.method + " " + path}}, 404);
}

}  // namespace kavio::sandbox
