#pragma once

#include <kavio/export.h>

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// How an operation ended.
enum class ResultType {
    UNKNOWN,         ///< never reported
    SUCCESS,         ///< the operation succeeded
    FAILURE,         ///< a failure without a more specific code
    NETWORK_FAILED,  ///< no network, or the connection was lost; a time-out and a refused connection are `FAILURE`
    ACCESS_DENIED,   ///< the service refused the session (HTTP 401)
    SDK_NOT_READY,   ///< never reported
    SERVER_ERROR,    ///< the service failed (HTTP 500 to 599), or sent a 3-D Secure reply that cannot be used
    BAD_INPUT,       ///< input refused (HTTP 400, or by the library itself), or a reply that is not understood
    BUSY,            ///< another operation of the same facade is under way
    NOT_LOGGED_IN,   ///< never reported
    TIMEOUT,         ///< the order was followed for as long as orders are followed
};

/// The enumerator's own name, such as "BAD_INPUT".
KAVIO_API std::string_view name(ResultType type);

/// Whether what was asked for has taken effect at the service. An operation that only asks is always `NONE`.
enum class Effect {
    NONE,     ///< it has not, and will not
    DONE,     ///< it has; for a purchase: there is an order
    UNKNOWN,  ///< it may have: the request has left, but no answer came back that is understood
};

/// Why an operation did not succeed, for programs.
enum class Cause {
    NONE,                 ///< it succeeded
    INVALID_INPUT,        ///< refused by the library, before anything was sent
    BUSY,                 ///< another operation of the same facade is under way
    NO_SESSION,           ///< nobody is logged in, or no one-time code was asked for
    SESSION_REFUSED,      ///< the session has ended: log in again
    SIGNATURE_REFUSED,    ///< the clock was off; the next operation sets it: try again
    UPDATE_REQUIRED,      ///< the service no longer takes this version of the application
    REFUSED_BY_SERVICE,   ///< the service understood and said no
    SERVICE_FAILED,       ///< the service is in trouble
    UNREADABLE_REPLY,     ///< the service answered, but its answer is not understood
    NO_NETWORK,           ///< this device has no route to anywhere
    CONNECTION_FAILED,    ///< the service cannot be reached
    CONNECTION_LOST,      ///< the connection ended before the answer was complete
    TIMED_OUT,            ///< no answer within 60 seconds
    UNTRUSTED_SERVICE,    ///< whoever answered could not prove to be the service
    FOLLOWING_TIMED_OUT,  ///< the order was followed for as long as orders are followed
    PAGE_NOT_SHOWN,       ///< there is no window for the card issuer's page, or it had to give way to another page
    CANCELED_BY_PERSON,   ///< the person closed the card issuer's page, or gave up a purchase that had not left yet
    STORE_FAILED,         ///< a payment could not be written down, so it was not made
    NOT_MADE,             ///< `settlePayment`: the service has no such payment, and none can arrive
    NOT_CERTAIN,          ///< `settlePayment`: the outcome of the payment cannot be told, or not yet
    OUT_OF_MEMORY,        ///< memory ran out on the way
    RELEASED,             ///< the wallet was released first; only told to who waits for an `Operation`
};

///@{
/// The enumerator's own name, such as "UNKNOWN".
KAVIO_API std::string_view name(Effect effect);
KAVIO_API std::string_view name(Cause cause);
///@}

/// The outcome of one operation. Immutable.
class KAVIO_API KavioResult {
public:
    /// Sets the members of the same names.
    KavioResult(ResultType type, std::optional<std::string> message, Effect effect = Effect::NONE,
                Cause cause = Cause::NONE);

    const ResultType type;  ///< how the operation ended
    /// For people; absent on success and on `BUSY`, and on any failure about which there is nothing to say. Its wording
    /// may change; programs should look at `cause`.
    const std::optional<std::string> message;
    const Effect effect;  ///< whether it has taken effect
    const Cause cause;    ///< why it did not succeed

    /// Type and message, for logs and tests.
    std::string debugDescription() const;
};

}  // namespace kavio
