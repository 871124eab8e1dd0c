#pragma once

#include <kavio/platform/linux.h>
#include <kavio/platform/url_session.h>

#include <memory>

namespace kavio {

// Sessions on libcurl, each with its own network thread. A session may be destroyed anywhere, even inside one of its
// completions. A completion that lets an exception out ends the program, as nobody is left to handle it.

std::shared_ptr<UrlSession> makeUrlSession(const UrlSessionConfiguration& configuration);
std::shared_ptr<BackgroundUrlSession> makeBackgroundUrlSession(const UrlSessionConfiguration& configuration);

}  // namespace kavio
