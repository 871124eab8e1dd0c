#include "network/environments.h"

#include "network/deployment.h"
#include "storage/kavio_user_defaults.h"

#include <array>

namespace kavio {
namespace {

struct Service {
    std::string_view name;
    std::string_view url;
};

// One row per case, in the order of the enumeration.
constexpr std::array services{
    Service{"ApiProduction", deployment::apiProduction},
    Service{"ApiQA1", deployment::apiQA1},
    Service{"ApiQA2", deployment::apiQA2},
    Service{"ApiQA3", deployment::apiQA3},
    Service{"ApiQA4", deployment::apiQA4},
    Service{"ApiKavioIL", deployment::apiKavioIL},
    Service{"ApiKavioDE", deployment::apiKavioDE},
    Service{"geoIPApi", deployment::geoIPApi},
    Service{"mapsGoogleApi", deployment::mapsGoogleApi},
    Service{"binlistApi", deployment::binlistApi},
    Service{"ApiQA2Stable", deployment::apiQA2Stable},
};
static_assert(services.size() == static_cast<std::size_t>(ApiType::ApiQA2Stable) + 1);

const Service& service(ApiType type) { return services[static_cast<std::size_t>(type)]; }

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
