#include "network/session.h"
#include "repositories/repositories.h"
#include "time/reliable_clock.h"

#include <utility>

namespace kavio {
namespace {

// A person's number is the same with and without "+", blanks and leading zeros.
std::string digitsOf(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (c >= '0' && c <= '9' && (c != '0' || !digits.empty())) digits += c;
    }
    return digits;
}

}  // namespace

template <class T>
void LoginRepository::send(APIRequest request, Completion<T> completion, Recorder<T> record) const {
    auto recorded = [isClockWrong = mIsClockWrong, record = std::move(record)](APIResult<T>& reply) {
        if (!reply && reply.failure().cause == Cause::SIGNATURE_REFUSED) *isClockWrong = true;
        if (record) record(reply);
    };
    if (*mIsClockWrong && !isTimeSampleFresh()) {
        return sendWithFreshTime<T>(std::move(request), std::move(completion), std::move(recorded));
    }
    *mIsClockWrong = false;
    KavioNetworkService::shared()->send(std::move(request),
                                        decodePayload<T>(std::move(completion), std::move(recorded)));
}

void LoginRepository::challenge(std::string countryCode, std::string phoneNumber, std::string challenge,
                                std::string retry, Completion<Challenge> completion) const {
    send<Challenge>(
        challengeRequest(std::move(countryCode), std::move(phoneNumber), std::move(challenge), std::move(retry)),
        std::move(completion), nullptr);
}

void LoginRepository::verify(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                             std::string phoneNumber, std::string challenge, std::string retry,
                             Completion<Token> completion) const {
    const auto open = [service = currentApiType(), phone = digitsOf(countryPhoneCode) + " " +
                                                           digitsOf(phoneNumber)](const APIResult<Token>& reply) {
        if (reply && reply.payload()) openSession(reply.payload()->token, service, phone);
    };
    send<Token>(verifyRequest(std::move(verifyCode), std::move(countryIsoCode), std::move(countryPhoneCode),
                              std::move(phoneNumber), std::move(challenge), std::move(retry)),
                std::move(completion), open);
}

}  // namespace kavio
