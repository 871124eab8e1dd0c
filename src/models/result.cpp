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

}  // namespace

std::string_view name(ResultType type) { return textOf(resultTypes, type); }

KavioResult::KavioResult(ResultType type_, std::optional<std::string> message_)
    : type(type_), message(std::move(message_)) {}

}  // namespace kavio
