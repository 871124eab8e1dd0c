#pragma once

#include <kavio/platform/linux.h>
#include <kavio/platform/url_session.h>

#include <memory>

namespace kavio {

// Sessions on libcurl, each with a network thread of its own. A session may be destroyed anywhere, inside one of its
// completions too. A completion that lets an exception out ends the program: nobody is left who could handle it.

std::shared_ptr<UrlSession> makeUrlSession(const UrlSessionConfiguration& configuration);
std::shared_ptr<BackgroundUrlSession> makeBackgroundUrlSession(const UrlSessionConfiguration& configuration);

}  // namespace kavio
