#include "explain.h"

#include "command_line/translation.h"
#include "wording/text.h"

#include <map>

namespace kavio::wallet {

namespace {

using enum Explanation::Remedy;

struct Words {
    const char* problem;
    const char* advice = "";
    Explanation::Remedy remedy = NONE;
    bool withMessage = false;  // whether the service may have said more
};

const Words unknown{later("That did not work."), later("Please try again later."), TRY_AGAIN};

const std::map<Cause, Words> words{
    {Cause::NO_SESSION, {later("You are not logged in."), later("Please log in."), LOG_IN}},
    {Cause::SESSION_REFUSED, {later("Your session has ended."), later("Please log in again."), LOG_IN}},
    {Cause::INVALID_INPUT, {later("Something you entered is not right."), later("Please check it."), NONE, true}},
    {Cause::REFUSED_BY_SERVICE, {later("The service did not accept that."), "", NONE, true}},
    {Cause::BUSY, {later("Another operation is still under way."), later("Please try again in a moment."), TRY_AGAIN}},
    {Cause::SIGNATURE_REFUSED,
     {later("The clock was wrong, so nothing was done."), later("Please try again."), TRY_AGAIN}},
    {Cause::UPDATE_REQUIRED, {later("This wallet is too old for the service."), later("Please update it.")}},
    {Cause::SERVICE_FAILED,
     {later("The service has a problem."), later("Please try again in a few minutes."), TRY_AGAIN, true}},
    {Cause::NO_NETWORK,
     {later("This device has no network."), later("Connect to a network, and try again."), TRY_AGAIN}},
    {Cause::CONNECTION_FAILED,
     {later("The service cannot be reached."), later("Please try again in a few minutes."), TRY_AGAIN}},
    {Cause::CONNECTION_LOST, {later("The connection was lost."), later("Please try again."), TRY_AGAIN}},
    {Cause::TIMED_OUT, {later("The service did not answer in time."), later("Please try again."), TRY_AGAIN}},
    {Cause::FOLLOWING_TIMED_OUT, {later("It is taking a very long time.")}},
    {Cause::UNTRUSTED_SERVICE,
     {later("Whatever answered could not prove that it is the service."), later("Try another network."), TRY_AGAIN}},
    {Cause::UNREADABLE_REPLY,
     {later("The service’s answer could not be understood."), later("Please try again later."), TRY_AGAIN}},
    {Cause::PAGE_NOT_SHOWN,
     {later("The card issuer’s page could not be shown, or not for long enough."), later("Please try again.")}},
    {Cause::CANCELED_BY_PERSON, {later("You closed the issuer’s page before the issuer had finished.")}},
    {Cause::STORE_FAILED, {later("The payment could not be written down on this device.")}},
    {Cause::OUT_OF_MEMORY,
     {later("This device is out of memory."), later("Close other programs, and try again."), TRY_AGAIN}},
};

std::string translated(const char* text) { return *text == '\0' ? std::string{} : gettext(text); }

}  // namespace

Explanation explain(const KavioResult& result) {
    const auto found = words.find(result.cause);
    const auto& known = found == words.end() ? unknown : found->second;
    auto problem = translated(known.problem);
    if (known.withMessage && result.message) problem += " (" + printable(*result.message) + ")";
    return {problem, translated(known.advice), known.remedy};
}

}  // namespace kavio::wallet
