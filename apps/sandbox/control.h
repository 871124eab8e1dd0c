#pragma once

#include "controlled.h"
#include "reply.h"
#include "secrets.h"

#include <httplib.h>

#include <string_view>

namespace kavio::sandbox {

/// The start of the paths that control the sandbox itself. They need no headers and no signature.
inline constexpr std::string_view controlPath = "/_sandbox";

/// Answers a request to control the sandbox, all but the stream of events; throws a Refusal.
Reply control(Controlled& service, const httplib::Request& request);

/// The page that does so in a browser.
Reply pageReply();

/// Whether the request's query asks for "secrets=true"; throws a Refusal (400) for any other query.
Secrets secretsIn(const httplib::Request& request);

}  // namespace kavio::sandbox
