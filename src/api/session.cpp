#include "api/state.h"

namespace kavio {

void Kavio::login(std::string countryCode, std::string phoneNumber) {
    mState->perform(&KavioDelegate::onLogin, Purpose::CHANGE, [&](const State::Operation<>& operation) {
        mState->mLoginRepo->challenge(std::move(countryCode), std::move(phoneNumber), "", "0",
                                      operation.then<Challenge>(&State::challengeResponse));
    });
}

void Kavio::State::challengeResponse(const Operation<>& operation, APIResult<Challenge> reply) {
    if (!reply) return operation.fail(reply.failure());
    mLastChallenge = reply.payload() ? std::optional(reply.payload()->challenge) : std::nullopt;
    operation.succeed();
}

void Kavio::verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber) {
    mState->perform(&KavioDelegate::onVerify, Purpose::CHANGE, [&](const State::Operation<>& operation) {
        if (!mState->mLastChallenge) {
            return operation.fail(ResultType::FAILURE, Cause::NO_SESSION, "please call login first");
        }
        mState->mLoginRepo->verify(std::move(otp), std::move(country), std::move(countryCode), std::move(phoneNumber),
                                   *mState->mLastChallenge, "0", operation.then<Token>(&State::verifyResponse));
    });
}

void Kavio::State::verifyResponse(const Operation<>& operation, APIResult<Token> reply) {
    if (!reply) return operation.fail(reply.failure());
    mLastChallenge.reset();
    operation.succeed();
}

void Kavio::isLoggedIn() {
    mState->perform(&KavioDelegate::onCheckIsUserLogin, Purpose::ASK, [&](const State::Operation<>& operation) {
        if (mState->mKavioUserDefaults->sessionToken().empty()) {
            return operation.fail(ResultType::FAILURE, Cause::NO_SESSION, "Token is empty");
        }
        mState->mAccountRepo->account(State::accountAppVersion, operation.finish<AccountModel>());
    });
}

void Kavio::logout() {
    mState->perform(&KavioDelegate::onLogout, Purpose::CHANGE, [&](const State::Operation<>& operation) {
        mState->mAccountRepo->logout(operation.finish<LogOutResponse>());
    });
}

}  // namespace kavio
