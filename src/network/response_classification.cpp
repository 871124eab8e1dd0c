#include "network/response_classification.h"

#include "models/replies.h"
#include "network/payload.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

namespace kavio {
namespace {

std::string localized(std::string_view text) { return Platform::current().mainBundle->localizedString(text); }

APIFailure unsuccessful(int status, std::optional<std::string> message) {
    return {APIError::responseUnsuccessful, status, std::move(message), std::nullopt};
}

// What a person sees of an error body: its message, or all of it when it has none.
std::optional<std::string> shownMessage(const std::optional<std::string>& body) {
    if (!body || body->empty()) return std::nullopt;
    if (auto message = errorMessage(*body)) return message;
    return Platform::current().characters->wellFormed(*body);
}

}  // namespace

APIFailure connectionFailure(const UrlError& error) {
    const bool noConnection =
        error.code == UrlError::notConnectedToInternet || error.code == UrlError::networkConnectionLost;
    return {APIError::requestFailed, noConnection ? statusNoConnection : statusConnectionFailure,
            "failed to send request, error: " + error.description, std::nullopt};
}

APIFailure classifyStatus(int status, const std::optional<std::string>& body) {
    switch (status) {
        case 401:
        case 406:
            KavioUserDefaults::shared()->defualt->set(keys::sessionToken, std::string());
            return unsuccessful(status, localized("Your session token is expaired"));
        case 417:
            return refusedSignature();
        case 426:
            return unsuccessful(status, localized("Upgrade version is required"));
        default:
            return unsuccessful(status, shownMessage(body));
    }
}

std::optional<std::string> errorMessage(std::string_view body) {
    const auto decoded = decodedOrNone<ErrorKeys>(body);
    return decoded ? std::optional(decoded->message) : std::nullopt;
}

APIFailure refusedSignature() {
    KavioUserDefaults::shared()->setServerExpiredTime(std::nullopt);
    return {APIError::invalidSignture, 417, "invalid_signature", "invalid_signature"};
}

}  // namespace kavio
