#include "network/environments.h"

#include "network/deployment.h"
#include "storage/kavio_user_defaults.h"

namespace kavio {
namespace {

using deployment::services;
static_assert(services.size() == static_cast<std::size_t>(ApiType::ApiQA2Stable) + 1);

const deployment::Service& service(ApiType type) { return services[static_cast<std::size_t>(type)]; }

}  // namespace

std::string_view name(ApiType type) { return service(type).name; }

std::string_view urlString(ApiType type) { return service(type).url; }

ApiType apiTypeNamed(const std::optional<std::string>& name) {
    for (std::size_t i = 0; name && i < services.size(); ++i) {
        if (services[i].name == *name) return static_cast<ApiType>(i);
    }
    return ApiType::ApiProduction;
}

ApiType currentApiType() { return apiTypeNamed(KavioUserDefaults::shared()->defualt->string(keys::serviceName)); }

}  // namespace kavio
