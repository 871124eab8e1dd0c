#include "api/state.h"
#include "models/json/document.h"
#include "network/environments.h"
#include "platform/background_step.h"
#include "util/auxiliary.h"

#include <kavio/kavio.h>

namespace kavio {
namespace {

ApiType serviceOf(Kavio::EnvironmentType environment) {
    switch (environment) {
        case Kavio::EnvironmentType::TEST:
            return ApiType::ApiQA2;
        case Kavio::EnvironmentType::TESTS:
            return ApiType::ApiQA2Stable;
        case Kavio::EnvironmentType::PROD:
            return ApiType::ApiProduction;
    }
    return ApiType::ApiProduction;
}

/// Network threads decode replies, and must have ended that before the parser's tables are destroyed.
void prepareDecoding() {
    static const bool done = (Document::chooseParser(), BackgroundStep::endAtExit(), true);
    static_cast<void>(done);
}

}  // namespace

std::optional<Kavio::EnvironmentType> Kavio::environmentType(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > static_cast<std::int64_t>(EnvironmentType::PROD)) return std::nullopt;
    return static_cast<EnvironmentType>(rawValue);
}

Kavio::Kavio(std::weak_ptr<KavioDelegate> delegate, std::string apiKey, EnvironmentType environment)
    : mState(std::make_shared<State>(std::move(delegate))) {
    try {
        prepareDecoding();
        StoreChanges changes{{std::string(keys::apiKey), std::move(apiKey)}};
        const auto service = serviceOf(environment);
        if (service != currentApiType()) changes.emplace(keys::serviceName, std::string(name(service)));
        mState->mKavioUserDefaults->defualt->write(changes);
        mState->attachToScene();
    } catch (...) {
        mState->mTDSecSceneController->release(mState.get());  // nobody else could
        throw;
    }
}

// A handler may be running right now, further up the stack, and keep the state alive for a moment longer.
Kavio::~Kavio() { mState->abandon(); }

bool Kavio::isBusy() const { return mState->mIsBusy; }

std::optional<std::string> Kavio::getVersion() const noexcept { return Auxiliary::version(); }

std::optional<std::string> Kavio::getBuild() const noexcept { return Auxiliary::build(); }

void Kavio::release(const void* caller) {
    const auto state = mState;  // closing a window may make the host destroy the facade
    state->release(caller == this ? state.get() : caller);
    contained([&] { state->mTDSecSceneController->release(state.get()); });
    state->abandon();
}

void Kavio::State::becomeIdle() {
    mIsBusy = false;
    mPrepared.reset();
}

void Kavio::State::abandon() {
    giveUpPurchase();
    becomeIdle();
    mDelegate.reset();
    closePage();
    mTDSecSceneController->detach(this);
    if (const auto listener = mListener.lock()) listener->abandon();
}

}  // namespace kavio
