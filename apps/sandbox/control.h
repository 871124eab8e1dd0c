#pragma once

#include "reply.h"
#include "steering.h"

#include <httplib.h>

namespace kavio::sandbox {

/// The start of the paths that control the sandbox itself. They need no headers and no signature.
inline constexpr std::string_view controlPath = "/_sandbox";

Reply control(Steering& steering, const httplib::Request& request);

}  // namespace kavio::sandbox
