#pragma once

#include "people/session.h"

#include <kavio/machine.h>

#include <memory>
#include <string>

namespace kavio::wallet {

/// The one machine of that code or QR text; throws `Failure` when there is none, or more than one.
std::shared_ptr<const Machine> machineNamed(Session& session, const std::string& code);

/// What to call it in a sentence.
std::string titleOf(const Machine& machine);

}  // namespace kavio::wallet
