#include "network/requests.h"

#include <kavio/platform/platform.h>

#include <vector>

namespace kavio {
namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (auto end = text.find(separator); end != std::string::npos; end = text.find(separator, begin)) {
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

// "2.3.1" of a host with build 45 is sent as "2.3145"; a version of another shape as it is.
std::string sentAppVersion(const std::string& appVersion) {
    const auto parts = split(appVersion, '.');
    if (parts.size() != 3) return appVersion;
    const auto build = Platform::current().mainBundle->informationText("CFBundleVersion").value_or("0");
    return parts[0] + "." + parts[1] + parts[2] + build;
}

}  // namespace

std::optional<JsonObject> ChallengeRequest::params() const {
    return JsonObject{
        {"countryCode", countryCode}, {"phoneNumber", phoneNumber}, {"challenge", challenge}, {"retry", retry}};
}

std::optional<JsonObject> VerifyRequest::params() const {
    return JsonObject{{"verificationCode", verifyCode},  {"challenge", challenge},
                      {"retryTimeoutSeconds", retry},    {"country", countryIsoCode},
                      {"countryCode", countryPhoneCode}, {"phoneNumber", phoneNumber}};
}

std::optional<JsonObject> AccountRequest::params() const {
    if (!appVersion) return std::nullopt;
    JsonObject params{{"os", os}, {"osVersion", version}, {"appVersion", sentAppVersion(*appVersion)}};
    setIfPresent(params, "pushToken", pushToken);
    return params;
}

std::optional<JsonObject> MachineByValueRequest::params() const {
    JsonObject params;
    setIfPresent(params, "machineId", query.machineId);
    setIfPresent(params, "kavioMachineId", query.kavioMachineId);
    setIfPresent(params, "longitude", query.longitude);
    setIfPresent(params, "latitude", query.latitude);
    setIfPresent(params, "machineType", query.machineType);
    setIfPresent(params, "limit", query.limit);
    setIfPresent(params, "distance", query.distance);
    setIfPresent(params, "isByAccount", query.isByAccount);
    setIfPresent(params, "hadOrder", query.hadOrder);
    setIfPresent(params, "country", query.country);
    setIfPresent(params, "uni_qr_scan", query.qr_scan);
    setIfPresent(params, "uni_qr_number", query.qr_number);
    setIfPresent(params, "hwSerial", query.hwSerial);
    setIfPresent(params, "operatorId", query.operatorId);
    return params;
}

std::optional<JsonObject> GetOrderRequest::params() const { return JsonObject{{"statusOnly", statusOnly}}; }

std::optional<JsonObject> AddCreditCardRequest::params() const {
    return JsonObject{{"paymentCard", paymentCard}, {"key", uuidKey}};
}

JsonObject Deposit::params() const {
    JsonObject params{{"paymentCardLocator", JsonObject{{"locator", tokenLocator}}},
                      {"amount", amount},
                      {"currency", currency},
                      {"autoTopup", autoTopup}};
    if (paypalMetaDataId) {
        params["payPalMetadataId"] = *paypalMetaDataId;
    } else {
        setIfPresent(params, "label", label);
    }
    return params;
}

}  // namespace kavio
