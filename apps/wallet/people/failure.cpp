#include "failure.h"

#include "command_line/columns.h"
#include "command_line/translation.h"
#include "wording/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace kavio::wallet {

namespace {

/// The most columns that a message may take. A gateway's error page has far more, which say nothing.
constexpr std::size_t longestMessage = 300;

/// What a cause means for the user.
struct Explanation {
    Cause cause;
    ExitStatus status;
    const char* what;
    bool isFollowedByMessage = false;
};

constexpr bool andMessage = true;

constexpr Explanation explanations[] = {
    {Cause::NO_SESSION, ExitStatus::NOT_LOGGED_IN, later("You are not logged in. Run `kavio-wallet login` first.")},
    {Cause::INVALID_INPUT, ExitStatus::REFUSED, later("The request was refused"), andMessage},
    {Cause::REFUSED_BY_SERVICE, ExitStatus::FAILED, later("That did not work"), andMessage},
    {Cause::BUSY, ExitStatus::FAILED, later("Another operation is still under way.")},
    {Cause::SIGNATURE_REFUSED, ExitStatus::FAILED,
     later("The clock was wrong, so nothing was done. It will be corrected: please try again.")},
    {Cause::UPDATE_REQUIRED, ExitStatus::FAILED, later("This kavio-wallet is too old for the service: update it.")},
    {Cause::SERVICE_FAILED, ExitStatus::SERVICE_FAILED, later("The service has a problem"), andMessage},
    {Cause::NO_NETWORK, ExitStatus::NO_NETWORK, later("This device has no network"), andMessage},
    {Cause::CONNECTION_FAILED, ExitStatus::NO_NETWORK, later("The service cannot be reached"), andMessage},
    {Cause::UNTRUSTED_SERVICE, ExitStatus::NO_NETWORK, later("Whoever answered could not prove to be the service"),
     andMessage},
    {Cause::UNREADABLE_REPLY, ExitStatus::NO_NETWORK,
     later("There was no usable reply: what the service sent is not understood.")},
    {Cause::CONNECTION_LOST, ExitStatus::NO_NETWORK, later("There was no usable reply: the connection was lost.")},
    {Cause::TIMED_OUT, ExitStatus::NO_NETWORK, later("There was no usable reply: the service did not answer in time.")},
    {Cause::FOLLOWING_TIMED_OUT, ExitStatus::TIMED_OUT, later("It is taking too long.")},
    {Cause::CANCELED_BY_PERSON, ExitStatus::FAILED,
     later("The card issuer's page was closed before the issuer had finished.")},
    {Cause::OUT_OF_MEMORY, ExitStatus::FAILED, later("This computer is out of memory.")},
    {Cause::PAGE_NOT_SHOWN, ExitStatus::FAILED,
     later("The card's issuer wants to show a page, but there is no window for it: this requires a display, "
           "and kavio-wallet-window next to this program: `scripts/demo --window` builds it, and the package "
           "kavio-tools-gtk has it.")},
    {Cause::STORE_FAILED, ExitStatus::FAILED,
     later("Nothing was paid, because the payment could not be written down first. Is its folder "
           "(--store-dir) writable, and does `kavio-wallet unsettled` list fewer than 100 payments?")},
};

/// The cause in the table. To the user, it is the same who refuses the input, and whether there was ever a session.
Cause explained(const KavioResult& result) {
    if (result.cause == Cause::SESSION_REFUSED) return Cause::NO_SESSION;
    if (result.cause == Cause::REFUSED_BY_SERVICE && result.type == ResultType::BAD_INPUT) return Cause::INVALID_INPUT;
    return result.cause;
}

Failure explain(const KavioResult& result) {
    const auto* const found = std::ranges::find(explanations, explained(result), &Explanation::cause);
    if (found == std::end(explanations)) return {ExitStatus::FAILED, sentence(tr("That did not work"), result.message)};
    const std::string what = gettext(found->what);
    return {found->status, found->isFollowedByMessage ? sentence(what, result.message) : what};
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
