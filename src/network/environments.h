#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// The deployments of the service, and three outside services. The order is the index.
enum class ApiType {
    ApiProduction,
    ApiQA1,
    ApiQA2,
    ApiQA3,
    ApiQA4,
    ApiKavioIL,
    ApiKavioDE,
    geoIPApi,
    mapsGoogleApi,
    binlistApi,
    ApiQA2Stable,
};

/// The case's name, which is what the store keeps.
std::string_view name(ApiType type);
/// The case's base URL, without a trailing "/".
std::string_view urlString(ApiType type);

/// The service of that name, which is what the store keeps; production if there is no such service.
ApiType apiTypeNamed(const std::optional<std::string>& name);
/// The service that the store names.
ApiType currentApiType();

}  // namespace kavio
