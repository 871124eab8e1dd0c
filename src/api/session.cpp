#include "api/state.h"
#include "network/kavio_network_service.h"
#include "network/payload.h"
#include "network/requests.h"

namespace kavio {

// Login and verification go straight to the transport: they are the first requests of a fresh install, and their
// signature stands without the server's time.

void Kavio::login(std::string countryCode, std::string phoneNumber) {
    const auto operation = mState->begin(&KavioDelegate::onLogin);
    if (!operation) return;
    KavioNetworkService::shared()->send(
        makeRequest<ChallengeRequest>({"challenge"}, std::move(countryCode), std::move(phoneNumber), "", "0"),
        decodePayload(operation->then<Challenge>(&State::challengeResponse)));
}

void Kavio::State::challengeResponse(const Operation<>& operation, APIResult<Challenge> reply) {
    if (!reply) return operation.fail(reply.failure());
    mLastChallenge = reply.payload() ? std::optional(reply.payload()->challenge) : std::nullopt;
    operation.succeed();
}

void Kavio::verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber) {
    const auto operation = mState->begin(&KavioDelegate::onVerify);
    if (!operation) return;
    if (!mState->mLastChallenge) return operation->fail(ResultType::FAILURE, "please call login first");
    KavioNetworkService::shared()->send(
        makeRequest<VerifyRequest>({"verify"}, std::move(otp), std::move(country), std::move(countryCode),
                                   std::move(phoneNumber), *mState->mLastChallenge, "0"),
        decodePayload<Token>([handler = operation->then<Token>(&State::verifyResponse)](APIResult<Token> reply) {
            // Kept even when the facade is gone by now: the session was opened.
            if (reply && reply.payload()) {
                KavioUserDefaults::shared()->defualt->set(keys::sessionToken, reply.payload()->token);
            }
            handler(std::move(reply));
        }));
}

void Kavio::State::verifyResponse(const Operation<>& operation, APIResult<Token> reply) {
    if (!reply) return operation.fail(reply.failure());
    mLastChallenge.reset();
    operation.succeed();
}

void Kavio::isLoggedIn() {
    const auto operation = mState->begin(&KavioDelegate::onCheckIsUserLogin);
    if (!operation) return;
    if (mState->mKavioUserDefaults->sessionToken().empty()) {
        return operation->fail(ResultType::FAILURE, "Token is empty");
    }
    mState->mAccountRepo->account(State::accountAppVersion, operation->finish<AccountModel>());
}

void Kavio::logout() {
    const auto operation = mState->begin(&KavioDelegate::onLogout);
    if (operation) mState->mAccountRepo->logout(operation->finish<LogOutResponse>());
}

}  // namespace kavio
