#include "api/state.h"
#include "network/kavio_network_service.h"
#include "network/payload.h"
#include "network/requests.h"

namespace kavio {

// Login and verification go straight to the transport: they are the first requests of a fresh install, and their
// signature stands without the server's time.

void Kavio::login(std::string countryCode, std::string phoneNumber) {
    if (!mState->isIdle(&KavioDelegate::onLogin)) return;
    mState->mIsBusy = true;
    KavioNetworkService::shared()->send(
        makeRequest<ChallengeRequest>({"challenge"}, std::move(countryCode), std::move(phoneNumber), "", "0"),
        decodePayload(mState->handled(&State::challengeResponse)));
}

void Kavio::State::challengeResponse(APIResult<Challenge> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onLogin, reply.failure());
    mLastChallenge = reply.payload() ? std::optional(reply.payload()->challenge) : std::nullopt;
    succeed(&KavioDelegate::onLogin);
}

void Kavio::verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber) {
    if (!mState->isIdle(&KavioDelegate::onVerify)) return;
    if (!mState->mLastChallenge) {
        return mState->fail(&KavioDelegate::onVerify, ResultType::FAILURE, "please call login first");
    }
    mState->mIsBusy = true;
    KavioNetworkService::shared()->send(
        makeRequest<VerifyRequest>({"verify"}, std::move(otp), std::move(country), std::move(countryCode),
                                   std::move(phoneNumber), *mState->mLastChallenge, "0"),
        decodePayload<Token>([handler = mState->handled(&State::verifyResponse)](APIResult<Token> reply) {
            // Kept even when the facade is gone by now: the session was opened.
            if (reply && reply.payload()) {
                KavioUserDefaults::shared()->defualt->set(keys::sessionToken, reply.payload()->token);
            }
            handler(std::move(reply));
        }));
}

void Kavio::State::verifyResponse(APIResult<Token> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onVerify, reply.failure());
    mLastChallenge.reset();
    succeed(&KavioDelegate::onVerify);
}

void Kavio::isLoggedIn() {
    if (!mState->isIdle(&KavioDelegate::onCheckIsUserLogin)) return;
    if (mState->mKavioUserDefaults->sessionToken().empty()) {
        return mState->fail(&KavioDelegate::onCheckIsUserLogin, ResultType::FAILURE, "Token is empty");
    }
    mState->mIsBusy = true;
    mState->mIsUserLogin = true;
    mState->fetchAccount();
}

void Kavio::State::fetchAccount() { mAccountRepo->account("2.5", handled(&State::accountResponse)); }

// Serves `isLoggedIn` and `getPaymentMethods`, which cannot be under way together.
void Kavio::State::accountResponse(APIResult<AccountModel> reply) {
    if (!mIsUserLogin) return paymentMethodsAccountResponse(std::move(reply));
    mIsBusy = false;
    mIsUserLogin = false;
    if (!reply) return fail(&KavioDelegate::onCheckIsUserLogin, reply.failure());
    succeed(&KavioDelegate::onCheckIsUserLogin);
}

void Kavio::logout() {
    if (!mState->isIdle(&KavioDelegate::onLogout)) return;
    mState->mIsBusy = true;
    mState->mAccountRepo->logout(mState->handled(&State::logoutResponse));
}

void Kavio::State::logoutResponse(APIResult<LogOutResponse> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onLogout, reply.failure());
    succeed(&KavioDelegate::onLogout);
}

}  // namespace kavio
