#include "network/response_classification.h"

#include "models/replies.h"
#include "network/payload.h"
#include "network/session.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

namespace kavio {
namespace {

std::string localized(std::string_view text) { return Platform::current().mainBundle->localizedString(text); }

Cause causeOf(const UrlError& error) {
    switch (error.code) {
        case UrlError::notConnectedToInternet:
            return Cause::NO_NETWORK;
        case UrlError::networkConnectionLost:
            return Cause::CONNECTION_LOST;
        case UrlError::timedOut:
            return Cause::TIMED_OUT;
        case UrlError::secureConnectionFailed:
        case UrlError::serverCertificateUntrusted:
            return Cause::UNTRUSTED_SERVICE;
        case UrlError::badUrl:
            return Cause::INVALID_INPUT;
        case UrlError::badServerResponse:
        case UrlError::dataLengthExceedsMaximum:
            return Cause::UNREADABLE_REPLY;
        case UrlError::cancelled:
        case UrlError::cannotFindHost:
        case UrlError::cannotConnectToHost:
            return Cause::CONNECTION_FAILED;
    }
    return Cause::CONNECTION_FAILED;
}

Cause causeOf(int status) {
    switch (status) {
        case 200:  // its body was lost
            return Cause::CONNECTION_LOST;
        case 401:
        case 406:
            return Cause::SESSION_REFUSED;
        case 417:
            return Cause::SIGNATURE_REFUSED;
        case 426:
            return Cause::UPDATE_REQUIRED;
        default:
            return status >= 400 && status <= 499 ? Cause::REFUSED_BY_SERVICE : Cause::SERVICE_FAILED;
    }
}

APIFailure unsuccessful(int status, std::optional<std::string> message) {
    return {APIError::responseUnsuccessful, status, std::move(message), std::nullopt};
}

// What a person sees of an error body: its message or, without one, all of it.
std::optional<std::string> shownMessage(const std::optional<std::string>& body) {
    if (!body || body->empty()) return std::nullopt;
    if (auto message = errorMessage(*body)) return message;
    return Platform::current().characters->wellFormed(*body);
}

}  // namespace

APIFailure connectionFailure(const UrlError& error) {
    const bool noConnection =
        error.code == UrlError::notConnectedToInternet || error.code == UrlError::networkConnectionLost;
    return {APIError::requestFailed,
            noConnection ? statusNoConnection : statusConnectionFailure,
            "failed to send request, error: " + error.description,
            std::nullopt,
            causeOf(error),
            error.mayHaveBeenSent ? Effect::UNKNOWN : Effect::NONE};
}

APIFailure judged(int status, APIFailure failure) {
    failure.cause = causeOf(status);
    failure.effect = status >= 400 && status <= 499 ? Effect::NONE : Effect::UNKNOWN;
    return failure;
}

APIFailure classifyStatus(int status, const std::optional<std::string>& body,
                          const std::optional<std::string>& sentToken) {
    switch (status) {
        case 401:
        case 406:
            endSession(sentToken);
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
