#include "tdsecure/td_secure_service.h"

#include "network/deployment.h"
#include "network/send_with_fresh_time.h"
#include "storage/kavio_user_defaults.h"
#include "tdsecure/requests.h"
#include "util/type_name.h"

#include <utility>

namespace kavio {
namespace {

// A request is named after its class; of the signed-in user it carries the session token.
template <class R>
RequestHead session() {
    return {typeName(typeid(R)), KavioUserDefaults::shared()->sessionToken()};
}

}  // namespace

void TDSecureService::addCard(TDSAddCard body, Completion<TDSAddCardResponseFactory> completion) const {
    sendWithFreshTime(makeRequest<TDSAddCardRequestProto>(session<TDSAddCardRequestProto>(), std::move(body)),
                      std::move(completion));
}

void TDSecureService::getCard(TDSGetCard body, Completion<TDSGetCardResponseFactory> completion) const {
    sendWithFreshTime(makeRequest<TDSGetCardRequestProto>(session<TDSGetCardRequestProto>(), std::move(body)),
                      std::move(completion));
}

void TDSecureService::getPage(std::string url, TDSGetPage body, Completion<std::string> completion) const {
    sendWithFreshTime(makeRequest<TDSGetPageRequestProto>({typeName(typeid(TDSGetPageRequestProto))}, std::move(body),
                                                          std::move(url)),
                      std::move(completion));
}

HeaderFields TDSGetPageRequestProto::headers() const {
    return {{"Content-Type", "application/x-www-form-urlencoded"},
            {"Cache-Control", "no-cache"},
            {"Host", std::string(deployment::issuerHost)}};
}

}  // namespace kavio
