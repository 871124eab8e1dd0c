#pragma once

#include "models/json/decoded_value.h"
#include "models/json/keyed_container.h"

#include <kavio/machine.h>

namespace kavio {

/// One machine of the machines reply.
template <>
struct Decoder<Machine> {
    static Machine decode(const DecodedValue& value);
};

}  // namespace kavio
