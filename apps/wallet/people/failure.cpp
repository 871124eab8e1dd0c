#include "failure.h"

#include "people/text.h"

#include <fmt/format.h>

namespace kavio::wallet {

namespace {

/// "what: message." or, without a message, "what."
std::string sentence(std::string_view what, const std::optional<std::string>& message) {
    auto text = message && !message->empty() ? fmt::format("{}: {}", what, printable(*message)) : std::string{what};
    if (!text.ends_with('.')) text += '.';
    return text;
}

/// Only a lost connection has a type of its own; of others, such as one that was refused, the message tells.
bool isConnectionFailure(const KavioResult& result) {
    return result.type == ResultType::NETWORK_FAILED ||
           (result.type == ResultType::FAILURE && result.message.value_or("").starts_with("failed to send request"));
}

Failure explain(const KavioResult& result) {
    const auto& message = result.message;
    if (isConnectionFailure(result)) return {ExitStatus::NO_NETWORK, sentence("There was no usable reply", message)};
    switch (result.type) {
        case ResultType::ACCESS_DENIED:
        case ResultType::NOT_LOGGED_IN:
            return {ExitStatus::NOT_LOGGED_IN, "You are not logged in. Run `kavio-wallet login` first."};
        case ResultType::TIMEOUT:
            return {ExitStatus::TIMED_OUT, sentence("It takes too long", message)};
        case ResultType::BAD_INPUT:
            return {ExitStatus::REFUSED, sentence("The request was refused", message)};
        case ResultType::SERVER_ERROR:
            return {ExitStatus::SERVICE_FAILED, sentence("The service has a problem", message)};
        case ResultType::BUSY:
            return {ExitStatus::FAILED, "Another operation is still under way."};
        case ResultType::UNKNOWN:
        case ResultType::SUCCESS:
        case ResultType::FAILURE:
        case ResultType::NETWORK_FAILED:
        case ResultType::SDK_NOT_READY:
            break;
    }
    return {ExitStatus::FAILED, sentence("That did not work", message)};
}

}  // namespace

Failure failureOf(const KavioResult& result) {
    auto failure = explain(result);
    failure.leavesOpen =
        !result.message || failure.status == ExitStatus::NO_NETWORK || failure.status == ExitStatus::SERVICE_FAILED;
    return failure;
}

}  // namespace kavio::wallet
