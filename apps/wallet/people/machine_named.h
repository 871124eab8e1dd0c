#pragma once

#include "people/session.h"

#include <kavio/machine.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kavio::wallet {

/// How the command line names a machine: by its code or QR text, or by a file with a picture of its QR code.
struct MachineName {
    std::string code = {};
    std::optional<std::string> picture = {};
};

/// Adds MACHINE and `--qr`, of which the command needs one.
void addMachineName(CLI::App& line, MachineName& name);

/// The machine with that name; throws `Failure` unless there is exactly one.
std::shared_ptr<const Machine> machineNamed(Session& session, const MachineName& name);

}  // namespace kavio::wallet
