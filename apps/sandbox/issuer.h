#pragma once

#include "reply.h"
#include "world.h"

#include <httplib.h>

#include <string>

namespace kavio::sandbox {

/// The start of the paths of the card issuer's pages.
inline constexpr std::string_view issuerPath = "/acs/";

/// The "z2" of a page that ended successfully.
inline constexpr std::string_view pageSucceeded = "0";

std::string fingerprintUrl(const std::string& id);
std::string challengeUrl(const World& world, const Enrolment& enrolment);

/// The card issuer's pages: "/acs/fingerprint/ID", which the library itself asks for, "/acs/challenge/ID",
/// "/acs/frame/ID" and "/acs/gallery/ID/REPLY", which a web view shows.
Reply issuerPage(World& world, const httplib::Request& request);

}  // namespace kavio::sandbox
