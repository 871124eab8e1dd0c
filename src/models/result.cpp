#include "models/enum_table.h"

#include <kavio/result.h>

#include <utility>

namespace kavio {
namespace {

constexpr EnumRow<ResultType> resultTypes[] = {
    {ResultType::UNKNOWN, "UNKNOWN"},
    {ResultType::SUCCESS, "SUCCESS"},
    {ResultType::FAILURE, "FAILURE"},
    {ResultType::NETWORK_FAILED, "NETWORK_FAILED"},
    {ResultType::ACCESS_DENIED, "ACCESS_DENIED"},
    {ResultType::SDK_NOT_READY, "SDK_NOT_READY"},
    {ResultType::SERVER_ERROR, "SERVER_ERROR"},
    {ResultType::BAD_INPUT, "BAD_INPUT"},
    {ResultType::BUSY, "BUSY"},
    {ResultType::NOT_LOGGED_IN, "NOT_LOGGED_IN"},
    {ResultType::TIMEOUT, "TIMEOUT"},
};

constexpr EnumRow<Effect> effects[] = {
    {Effect::NONE, "NONE"},
    {Effect::DONE, "DONE"},
    {Effect::UNKNOWN, "UNKNOWN"},
};

constexpr EnumRow<Cause> causes[] = {
    {Cause::NONE, "NONE"},
    {Cause::INVALID_INPUT, "INVALID_INPUT"},
    {Cause::BUSY, "BUSY"},
    {Cause::NO_SESSION, "NO_SESSION"},
    {Cause::SESSION_REFUSED, "SESSION_REFUSED"},
    {Cause::SIGNATURE_REFUSED, "SIGNATURE_REFUSED"},
    {Cause::UPDATE_REQUIRED, "UPDATE_REQUIRED"},
    {Cause::REFUSED_BY_SERVICE, "REFUSED_BY_SERVICE"},
    {Cause::SERVICE_FAILED, "SERVICE_FAILED"},
    {Cause::UNREADABLE_REPLY, "UNREADABLE_REPLY"},
    {Cause::NO_NETWORK, "NO_NETWORK"},
    {Cause::CONNECTION_FAILED, "CONNECTION_FAILED"},
    {Cause::CONNECTION_LOST, "CONNECTION_LOST"},
    {Cause::TIMED_OUT, "TIMED_OUT"},
    {Cause::UNTRUSTED_SERVICE, "UNTRUSTED_SERVICE"},
    {Cause::FOLLOWING_TIMED_OUT, "FOLLOWING_TIMED_OUT"},
    {Cause::PAGE_NOT_SHOWN, "PAGE_NOT_SHOWN"},
    {Cause::CANCELED_BY_PERSON, "CANCELED_BY_PERSON"},
    {Cause::STORE_FAILED, "STORE_FAILED"},
    {Cause::NOT_MADE, "NOT_MADE"},
    {Cause::NOT_CERTAIN, "NOT_CERTAIN"},
    {Cause::OUT_OF_MEMORY, "OUT_OF_MEMORY"},
};

}  // namespace

std::string_view name(ResultType type) { return textOf(resultTypes, type); }

std::string_view name(Effect effect) { return textOf(effects, effect); }

std::string_view name(Cause cause) { return textOf(causes, cause); }

KavioResult::KavioResult(ResultType type_, std::optional<std::string> message_, Effect effect_, Cause cause_)
    : type(type_), message(std::move(message_)), effect(effect_), cause(cause_) {}

}  // namespace kavio
