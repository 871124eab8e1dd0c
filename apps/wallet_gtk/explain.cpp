#include "explain.h"

#include "command_line/translation.h"
#include "wording/text.h"

#include <map>

namespace kavio::wallet_gtk {

namespace {

using enum Explanation::Remedy;

struct Words {
    const char* sentence;
    Explanation::Remedy remedy = NONE;
    bool withMessage = false;  // whether the service may have said more
};

const std::map<Cause, Words> words{
    {Cause::NO_SESSION, {later("Please log in."), LOG_IN}},
    {Cause::SESSION_REFUSED, {later("Your session has ended. Please log in again."), LOG_IN}},
    {Cause::INVALID_INPUT, {later("That cannot be right: please check what you entered."), NONE, true}},
    {Cause::REFUSED_BY_SERVICE, {later("The service did not accept that."), NONE, true}},
    {Cause::BUSY, {later("Something else is still under way. Please try again in a moment."), TRY_AGAIN}},
    {Cause::SIGNATURE_REFUSED, {later("The clock was wrong, so nothing was done. Please try again."), TRY_AGAIN}},
    {Cause::UPDATE_REQUIRED, {later("This wallet is too old for the service. Please update it.")}},
    {Cause::SERVICE_FAILED, {later("The service has a problem. Please try again in a few minutes."), TRY_AGAIN, true}},
    {Cause::NO_NETWORK, {later("This device has no network. Connect it, and try again."), TRY_AGAIN}},
    {Cause::CONNECTION_FAILED, {later("The service cannot be reached. Please try again in a few minutes."), TRY_AGAIN}},
    {Cause::CONNECTION_LOST, {later("The connection was lost. Please try again."), TRY_AGAIN}},
    {Cause::TIMED_OUT, {later("The service did not answer in time. Please try again."), TRY_AGAIN}},
    {Cause::UNTRUSTED_SERVICE,
     {later("Whoever answered could not prove to be the service. Try another network."), TRY_AGAIN}},
    {Cause::UNREADABLE_REPLY, {later("The service’s answer is not understood. Please try again later."), TRY_AGAIN}},
    {Cause::PAGE_NOT_SHOWN, {later("The page of the card’s issuer had to give way. Please try again.")}},
    {Cause::CANCELED_BY_PERSON, {later("You closed the issuer’s page before the issuer had finished.")}},
    {Cause::STORE_FAILED, {later("Nothing was paid, because this device’s storage cannot be written to.")}},
    {Cause::OUT_OF_MEMORY, {later("This device is out of memory. Close something, and try again."), TRY_AGAIN}},
};

}  // namespace

Explanation explain(const KavioResult& result) {
    const auto found = words.find(result.cause);
    if (found == words.end()) return {tr("That did not work. Please try again later."), TRY_AGAIN};
    std::string sentence = gettext(found->second.sentence);
    if (found->second.withMessage && result.message) sentence += " (" + wallet::printable(*result.message) + ")";
    return {sentence, found->second.remedy};
}

}  // namespace kavio::wallet_gtk
