#include "models/enum_table.h"

#include <kavio/result.h>

#include <utility>

namespace kavio {
namespace {

constexpr auto resultTypes = KAVIO_ENUMERATORS(ResultType, UNKNOWN, SUCCESS, FAILURE, NETWORK_FAILED, ACCESS_DENIED,
                                               SDK_NOT_READY, SERVER_ERROR, BAD_INPUT, BUSY, NOT_LOGGED_IN, TIMEOUT);

constexpr auto effects = KAVIO_ENUMERATORS(Effect, NONE, DONE, UNKNOWN);

constexpr auto causes =
    KAVIO_ENUMERATORS(Cause, NONE, INVALID_INPUT, BUSY, NO_SESSION, SESSION_REFUSED, SIGNATURE_REFUSED, UPDATE_REQUIRED,
                      REFUSED_BY_SERVICE, SERVICE_FAILED, UNREADABLE_REPLY, NO_NETWORK, CONNECTION_FAILED,
                      CONNECTION_LOST, TIMED_OUT, UNTRUSTED_SERVICE, FOLLOWING_TIMED_OUT, PAGE_NOT_SHOWN,
                      CANCELED_BY_PERSON, STORE_FAILED, NOT_MADE, NOT_CERTAIN, OUT_OF_MEMORY, RELEASED);

}  // namespace

std::string_view name(ResultType type) { return textOf(resultTypes, type); }

std::string_view name(Effect effect) { return textOf(effects, effect); }

std::string_view name(Cause cause) { return textOf(causes, cause); }

KavioResult::KavioResult(ResultType type_, std::optional<std::string> message_, Effect effect_, Cause cause_)
    : type(type_), message(std::move(message_)), effect(effect_), cause(cause_) {}

}  // namespace kavio
