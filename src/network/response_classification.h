#pragma once

#include "network/api_result.h"

#include <kavio/platform/url_session.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// The failure of a request that got no reply.
APIFailure connectionFailure(const UrlError& error);

/// The failure that a status other than 200 stands for. Carries out what the status demands of the stored state: 401
/// and 406 end the session of the token that was sent, 417 clears the time sample's expiry.
APIFailure classifyStatus(int status, const std::optional<std::string>& body,
                          const std::optional<std::string>& sentToken);

/// The same failure with what a status other than 200 says of cause and effect.
APIFailure judged(int status, APIFailure failure);

/// The `message` of a server's error body; absent when the body is not of that shape.
std::optional<std::string> errorMessage(std::string_view body);

/// Status 417: the signature was refused, most often for its time, so the next request asks for the time first.
APIFailure refusedSignature();

}  // namespace kavio
