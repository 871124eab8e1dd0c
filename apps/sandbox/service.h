#pragma once

#include "parameters.h"
#include "reply.h"
#include "request.h"
#include "world.h"

#include <httplib.h>

#include <string>
#include <vector>

namespace kavio::sandbox {

/// One request that has passed every check, on its way through a handler.
struct Call {
    World& world;
    nlohmann::json in;                  // the parameters, of the kinds that the route declares
    std::vector<std::string> captured;  // the path's segments for each "*" of the route
    Account* account = nullptr;         // null on routes without a session
    std::string token;
};

enum class Access { session, open };

/// The parameters of a POST come in its body, those of any other request in the query.
struct Route {
    const char* method;
    const char* path;  // below "/v1"; "*" stands for one segment
    nlohmann::json (*handle)(Call&);
    Parameters parameters = {};
    Access access = Access::session;
};
using Routes = std::vector<Route>;

Routes sessionRoutes();
Routes machineRoutes();
Routes orderRoutes();
Routes paymentRoutes();
Routes tdSecureRoutes();
Routes allRoutes();

/// A campaign's look, as it appears in machines, orders and transactions.
nlohmann::json lookAndFeelReply(const Campaign& campaign);

/// The service's API: finds the route, checks headers, signature, session and parameters, and calls the handler.
class Service {
public:
    explicit Service(World& world);
    Reply handle(const httplib::Request& request);

private:
    Reply dispatch(const httplib::Request& request);
    void checkHeaders(const httplib::Request& request) const;
    nlohmann::json parametersOf(const httplib::Request& request, const Route& route) const;

    World& mWorld;
    const Routes mRoutes;
};

/// Throws a Refusal (417) unless the signature matches the request's URL, body and time.
void requireSignature(const httplib::Request& request, const World& world);

}  // namespace kavio::sandbox
