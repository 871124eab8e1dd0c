#include "guard.h"

#include "reply.h"

#include <algorithm>

namespace kavio::sandbox {

bool isAtOneOf(const std::vector<std::string>& names, const httplib::Request& request) {
    const auto host = request.get_header_value("Host");
    return std::ranges::find(names, host.substr(0, host.find(':'))) != names.end();
}

void refuseOtherSites(const httplib::Request& request) {
    const auto site = request.get_header_value("Sec-Fetch-Site");
    const auto origin = request.get_header_value("Origin");
    const bool isBrowser = !site.empty() || !origin.empty();
    const bool isRead = request.method == "GET";
    if (!isBrowser) return;
    // "none": a person has typed the address.
    const bool isOwnSite = site.empty() || site == "same-origin" || (site == "none" && isRead);
    const bool isOwnOrigin = origin.empty() || origin == "https://" + request.get_header_value("Host");
    if (!isOwnSite || !isOwnOrigin) throw Refusal(403, "a page of another site must not control the sandbox");
    if (!isRead && !request.has_header(pageHeader))
        throw Refusal(403, std::string("a browser's request to control the sandbox needs the header ") + pageHeader);
}

}  // namespace kavio::sandbox
