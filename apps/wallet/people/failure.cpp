#include "failure.h"

#include "command_line/columns.h"
#include "command_line/translation.h"
#include "wording/text.h"

#include <fmt/format.h>

namespace kavio::wallet {

namespace {

/// The most columns that a message may take. A gateway's error page has far more, which say nothing.
constexpr std::size_t longestMessage = 300;

Failure explain(const KavioResult& result) {
    const auto failure = [&](ExitStatus status, std::string_view what) {
        return Failure{status, sentence(what, result.message)};
    };
    switch (result.cause) {
        case Cause::NO_SESSION:
        case Cause::SESSION_REFUSED:
            return {ExitStatus::NOT_LOGGED_IN, tr("You are not logged in. Run `kavio-wallet login` first.")};
        case Cause::INVALID_INPUT:
            return failure(ExitStatus::REFUSED, tr("The request was refused"));
        case Cause::REFUSED_BY_SERVICE:
            if (result.type == ResultType::BAD_INPUT)
                return failure(ExitStatus::REFUSED, tr("The request was refused"));
            return failure(ExitStatus::FAILED, tr("That did not work"));
        case Cause::BUSY:
            return {ExitStatus::FAILED, tr("Another operation is still under way.")};
        case Cause::SIGNATURE_REFUSED:
            return {ExitStatus::FAILED,
                    tr("The clock was wrong, so nothing was done. It will be corrected: please try again.")};
        case Cause::UPDATE_REQUIRED:
            return {ExitStatus::FAILED, tr("This kavio-wallet is too old for the service: update it.")};
        case Cause::SERVICE_FAILED:
            return failure(ExitStatus::SERVICE_FAILED, tr("The service has a problem"));
        case Cause::NO_NETWORK:
            return failure(ExitStatus::NO_NETWORK, tr("This device has no network"));
        case Cause::CONNECTION_FAILED:
            return failure(ExitStatus::NO_NETWORK, tr("The service cannot be reached"));
        case Cause::UNTRUSTED_SERVICE:
            return failure(ExitStatus::NO_NETWORK, tr("Whoever answered could not prove to be the service"));
        case Cause::UNREADABLE_REPLY:
            return {ExitStatus::NO_NETWORK, tr("There was no usable reply: what the service sent is not understood.")};
        case Cause::CONNECTION_LOST:
            return {ExitStatus::NO_NETWORK, tr("There was no usable reply: the connection was lost.")};
        case Cause::TIMED_OUT:
            return {ExitStatus::NO_NETWORK, tr("There was no usable reply: the service did not answer in time.")};
        case Cause::FOLLOWING_TIMED_OUT:
            return {ExitStatus::TIMED_OUT, tr("It is taking too long.")};
        case Cause::CANCELED_BY_PERSON:
            return {ExitStatus::FAILED, tr("The card issuer's page was closed before the issuer had finished.")};
        case Cause::OUT_OF_MEMORY:
            return {ExitStatus::FAILED, tr("This computer is out of memory.")};
        case Cause::PAGE_NOT_SHOWN:
            return {
                ExitStatus::FAILED,
                tr("The card's issuer wants to show a page, but there is no window for it: this requires a display, "
                   "and kavio-wallet-window next to this program: `scripts/demo --window` builds it, and the package "
                   "kavio-tools-gtk has it.")};
        case Cause::STORE_FAILED:
            return {ExitStatus::FAILED,
                    tr("Nothing was paid, because the payment could not be written down first. Is its folder "
                       "(--store-dir) writable, and does `kavio-wallet unsettled` list fewer than 100 payments?")};
        case Cause::NONE:
        case Cause::NOT_MADE:
        case Cause::NOT_CERTAIN:
        case Cause::RELEASED:
            break;
    }
    return failure(ExitStatus::FAILED, tr("That did not work"));
}

}  // namespace

Failure Failure::withHint(std::string_view hint) const {
    return leavesOpen ? Failure(status, fmt::format("{} {}", what(), hint)) : *this;
}

Failure Failure::saying(Cause why, const std::string& sentence) const {
    return cause == why ? Failure(status, sentence) : *this;
}

std::string sentence(std::string_view what, const std::optional<std::string>& message) {
    auto text = message && !message->empty()
                    ? fmt::format("{}: {}", what, command_line::cutTo(longestMessage, printable(*message)))
                    : std::string{what};
    if (!text.ends_with('.') && !text.ends_with(tr("."))) text += tr(".");
    return text;
}

Failure failureOf(const KavioResult& result) {
    auto failure = explain(result);
    failure.cause = result.cause;
    failure.leavesOpen = result.effect == Effect::UNKNOWN;
    return failure;
}

}  // namespace kavio::wallet
