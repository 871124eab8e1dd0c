#pragma once

#include "network/api_result.h"

#include <kavio/platform/url_session.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// The failure of a request that got no reply.
APIFailure connectionFailure(const UrlError& error);

/// The failure that a status other than 200 stands for. Also makes the changes to the stored state that the status
/// demands: 401 and 406 end the session of the token that was sent, 417 clears the time sample's expiry.
APIFailure classifyStatus(int status, const std::optional<std::string>& body,
                          const std::optional<std::string>& sentToken);

/// The same failure, with the cause and effect of a status other than 200.
APIFailure judged(int status, APIFailure failure);

/// The `message` of a server's error body; absent when the body is not of that shape.
std::optional<std::string> errorMessage(std::string_view body);

/// Status 417: the signature was refused, most often for its time, so the next request asks for the time first.
APIFailure refusedSignature();

}  // namespace kavio
