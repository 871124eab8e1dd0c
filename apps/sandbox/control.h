#pragma once

#include "reply.h"
#include "steering.h"

#include <httplib.h>

namespace kavio::sandbox {

/// What precedes the paths that steer the sandbox itself: no headers, no signature.
inline constexpr std::string_view controlPath = "/_sandbox";

Reply control(Steering& steering, const httplib::Request& request);

}  // namespace kavio::sandbox
