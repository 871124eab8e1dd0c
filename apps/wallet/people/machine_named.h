#pragma once

#include "people/session.h"

#include <kavio/machine.h>

#include <memory>
#include <string>

namespace kavio::wallet {

/// The machine with that code or QR text; throws `Failure` unless there is exactly one.
std::shared_ptr<const Machine> machineNamed(Session& session, const std::string& code);

/// What to call the machine in a sentence.
std::string titleOf(const Machine& machine);

}  // namespace kavio::wallet
