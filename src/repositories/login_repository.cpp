#include "network/kavio_network_service.h"
#include "network/payload.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"

#include <utility>

namespace kavio {

void LoginRepository::challenge(std::string countryCode, std::string phoneNumber, std::string challenge,
                                std::string retry, Completion<Challenge> completion) const {
    KavioNetworkService::shared()->send(
        challengeRequest(std::move(countryCode), std::move(phoneNumber), std::move(challenge), std::move(retry)),
        decodePayload(std::move(completion)));
}

void LoginRepository::verify(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                             std::string phoneNumber, std::string challenge, std::string retry,
                             Completion<Token> completion) const {
    KavioNetworkService::shared()->send(
        verifyRequest(std::move(verifyCode), std::move(countryIsoCode), std::move(countryPhoneCode),
                      std::move(phoneNumber), std::move(challenge), std::move(retry)),
        decodePayload<Token>([completion = std::move(completion)](APIResult<Token> reply) {
            if (reply && reply.payload()) {
                KavioUserDefaults::shared()->defualt->set(keys::sessionToken, reply.payload()->token);
            }
            completion(std::move(reply));
        }));
}

}  // namespace kavio
