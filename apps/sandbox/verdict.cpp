#include "verdict.h"

#include "request.h"
#include "signature.h"

#include <fmt/format.h>

namespace kavio::sandbox {

bool asksForTime(const httplib::Request& request) { return request.path == std::string(basePath) + "/time"; }

/// The `Host` header leaves out a port that is the scheme's own, but the production base URL spells that port out.
std::string signedUrl(const httplib::Request& request) {
    const auto host = request.get_header_value("Host");
    const char* port = host == "api.kavio.example" ? ":443" : "";
    return fmt::format("https://{}{}{}", host, port, request.target);
}

Verdict verdictOn(const httplib::Request& request, TimePoint now, std::chrono::seconds window) {
    const auto signature = request.get_header_value("X-Zelto-Sign");
    if (signature.empty()) return Verdict::missing;
    const std::chrono::hours reach{asksForTime(request) ? 24 * 366 * 60 : 24};
    switch (checkSignature(signature, signedUrl(request), request.body, now, window, reach)) {
        case SignatureCheck::valid:
            return Verdict::valid;
        case SignatureCheck::stale:
            return Verdict::stale;
        case SignatureCheck::wrong:
            break;
    }
    return Verdict::wrong;
}

}  // namespace kavio::sandbox
