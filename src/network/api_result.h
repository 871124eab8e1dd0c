#pragma once

#include <kavio/result.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace kavio {

enum class APIError {
    requestFailed,            ///< no HTTP response
    jsonConversionFailure,    ///< a 200 body that does not decode, or a download that cannot be read
    invalidData,              ///< status 200 without a body
    responseUnsuccessful,     ///< any status other than 200
    jsonParsingFailure,       ///< not produced
    internetConnectionFaild,  ///< not produced: a lost connection is `requestFailed` with `statusNoConnection`
    serverError,              ///< not produced: a server error is `responseUnsuccessful` with its status
    invalidSignture,          ///< status 417
};

/// Statuses of failures without an HTTP response.
inline constexpr std::int64_t statusNoConnection = -100;
inline constexpr std::int64_t statusConnectionFailure = -1;

struct APIFailure {
    APIError error{};
    std::int64_t status = 0;
    std::optional<std::string> message;
    std::optional<std::string> fallbackMessage;
    /// What programs are told. By default, an answer came that is not understood.
    Cause cause = Cause::UNREADABLE_REPLY;
    /// For a request that changes something.
    Effect effect = Effect::UNKNOWN;
};

/// How an exchange with the service ended: success with a payload, which a reply may lack, or a failure.
template <class P>
class APIResult {
public:
    // Made only by name, so that a payload that converts to a failure, or the reverse, does not compile.
    static APIResult success(std::optional<P> payload) { return APIResult{std::move(payload)}; }
    static APIResult failed(APIFailure failure) { return APIResult{std::move(failure)}; }

    explicit operator bool() const { return std::holds_alternative<std::optional<P>>(mValue); }
    const std::optional<P>& payload() const& { return std::get<std::optional<P>>(mValue); }
    std::optional<P> payload() && { return std::get<std::optional<P>>(std::move(mValue)); }
    const APIFailure& failure() const { return std::get<APIFailure>(mValue); }

private:
    explicit APIResult(std::variant<std::optional<P>, APIFailure> value) : mValue(std::move(value)) {}

    std::variant<std::optional<P>, APIFailure> mValue;
};

template <class P>
using Completion = std::function<void(APIResult<P>)>;

}  // namespace kavio
