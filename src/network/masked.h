#pragma once

#include <kavio/platform/url_session.h>

#include <string>
#include <string_view>

/// Texts of a request or reply, of which only what is known to be harmless is left. What is masked is not copied
/// either, so that no card number is left in memory.
namespace kavio {

std::string maskedUrl(std::string_view url);
/// "[NAME: VALUE, …]", without those whose value says nothing.
std::string maskedHeaders(const HeaderFields& headers);
/// Of a text that need not be JSON; what is long is cut.
std::string maskedBody(std::string_view body);

}  // namespace kavio
