#pragma once

#include <httplib.h>

#include <string>
#include <vector>

namespace kavio::sandbox {

/// Whether a request is for one of these hosts.
bool isAtOneOf(const std::vector<std::string>& names, const httplib::Request& request);

/// The header by which our page says that a change is its own. Another site's page cannot send it.
inline constexpr const char* pageHeader = "X-Kavio-Sandbox";

/// Throws a Refusal (403) for a request that the page of another site may have caused. Programs other than browsers
/// need not send anything.
void refuseOtherSites(const httplib::Request& request);

}  // namespace kavio::sandbox
