#include "api/state.h"

namespace kavio {

void Kavio::login(std::string countryCode, std::string phoneNumber) {
    const auto operation = mState->begin(&KavioDelegate::onLogin, Purpose::CHANGE);
    if (!operation) return;
    mState->mLoginRepo->challenge(std::move(countryCode), std::move(phoneNumber), "", "0",
                                  operation->then<Challenge>(&State::challengeResponse));
}

void Kavio::State::challengeResponse(const Operation<>& operation, APIResult<Challenge> reply) {
    if (!reply) return operation.fail(reply.failure());
    mLastChallenge = reply.payload() ? std::optional(reply.payload()->challenge) : std::nullopt;
    operation.succeed();
}

void Kavio::verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber) {
    const auto operation = mState->begin(&KavioDelegate::onVerify, Purpose::CHANGE);
    if (!operation) return;
    if (!mState->mLastChallenge) {
        return operation->fail(ResultType::FAILURE, Cause::NO_SESSION, "please call login first");
    }
    mState->mLoginRepo->verify(std::move(otp), std::move(country), std::move(countryCode), std::move(phoneNumber),
                               *mState->mLastChallenge, "0", operation->then<Token>(&State::verifyResponse));
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
        return operation->fail(ResultType::FAILURE, Cause::NO_SESSION, "Token is empty");
    }
    mState->mAccountRepo->account(State::accountAppVersion, operation->finish<AccountModel>());
}

void Kavio::logout() {
    const auto operation = mState->begin(&KavioDelegate::onLogout, Purpose::CHANGE);
    if (operation) mState->mAccountRepo->logout(operation->finish<LogOutResponse>());
}

}  // namespace kavio
