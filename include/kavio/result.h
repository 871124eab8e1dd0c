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
    NETWORK_FAILED,  ///< no connection, or the connection was lost
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

/// The outcome of one operation. Immutable.
class KAVIO_API KavioResult {
public:
    KavioResult(ResultType type, std::optional<std::string> message);

    const ResultType type;
    /// For people; absent on success and on `BUSY`, and on any failure of which there is nothing to say.
    const std::optional<std::string> message;

    std::string debugDescription() const;
};

}  // namespace kavio
