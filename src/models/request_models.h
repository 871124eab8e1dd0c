#pragma once

#include "models/json/json_types.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

class KeyedContainer;

/// Identifies a machine, by its identifier or by the text of a QR code.
struct MachineByValueModel {
    std::optional<std::uint64_t> machineId;
    std::optional<std::string> qrScan;
    std::optional<std::string> qrNumber;
    static MachineByValueModel decode(const KeyedContainer& in);
    JsonObject encode() const;
};

}  // namespace kavio
