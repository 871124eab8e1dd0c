#pragma once

#include "network/environments.h"
#include "network/session.h"
#include "time/reliable_clock.h"

#include <optional>
#include <string>

namespace kavio {

/// Everything in the store that a call depends on, as of one moment: to look for other programs' writes costs as much
/// as to sign the call.
struct StoredState {
    ApiType service = ApiType::ApiProduction;
    std::optional<std::string> apiKey;
    SessionToken session;
    StoredSample sample;
};

StoredState storedState();

}  // namespace kavio
