#include "failure.h"

#include "people/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace kavio::wallet {

namespace {

/// The most columns that a message may take. A gateway's error page has far more, which say nothing.
constexpr std::size_t longestMessage = 300;

/// Only a lost connection has its own type; any other, such as a refused one, shows in the message. A refusal without a
/// message cannot be told from a reply that was not understood.
bool hasNoUsableReply(const KavioResult& result) {
    return result.type == ResultType::NETWORK_FAILED ||
           (result.type == ResultType::FAILURE && result.message.value_or("").starts_with("failed to send request")) ||
           (result.type == ResultType::BAD_INPUT && !result.message);
}

/// A session that the service no longer knows has its own type; one that has expired does not.
bool isSessionOver(const KavioResult& result) {
    return result.type == ResultType::ACCESS_DENIED || result.type == ResultType::NOT_LOGGED_IN ||
           result.message == "Your session token is expaired";
}

Failure explain(const KavioResult& result) {
    const auto& message = result.message;
    if (hasNoUsableReply(result)) return {ExitStatus::NO_NETWORK, sentence("There was no usable reply", message)};
    if (isSessionOver(result))
        return {ExitStatus::NOT_LOGGED_IN, "You are not logged in. Run `kavio-wallet login` first."};
    if (result.message == "invalid_signature")
        return {ExitStatus::FAILED,
                "The clock was wrong, so nothing was done. It will be set again: please try again."};
    switch (result.type) {
        case ResultType::TIMEOUT:
            return {ExitStatus::TIMED_OUT, sentence("It is taking too long", message)};
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
        case ResultType::ACCESS_DENIED:
        case ResultType::NOT_LOGGED_IN:
        case ResultType::SDK_NOT_READY:
            break;
    }
    return {ExitStatus::FAILED, sentence("That did not work", message)};
}

/// The page of a gateway does not come from the service.
bool isFromTheService(const std::optional<std::string>& message) {
    return message &&
           !message->substr(std::min(message->find_first_not_of(" \t\r\n"), message->size())).starts_with('<');
}

}  // namespace

Failure Failure::withHint(std::string_view hint) const {
    return leavesOpen ? Failure(status, fmt::format("{} {}", what(), hint)) : *this;
}

std::string sentence(std::string_view what, const std::optional<std::string>& message) {
    auto text = message && !message->empty() ? fmt::format("{}: {}", what, cutTo(longestMessage, printable(*message)))
                                             : std::string{what};
    if (!text.ends_with('.')) text += '.';
    return text;
}

Failure failureOf(const KavioResult& result) {
    auto failure = explain(result);
    failure.leavesOpen = !isFromTheService(result.message) || failure.status == ExitStatus::NO_NETWORK ||
                         failure.status == ExitStatus::SERVICE_FAILED;
    return failure;
}

}  // namespace kavio::wallet
