#pragma once

#include "reserved/serializable.h"

#include <cstdint>
#include <vector>

namespace kavio {

/// A reading of the clocks as it is archived. The library keeps its time sample in `KavioUserDefaults` instead.
class ReliableClockState final : public Serializable {
public:
    std::uint64_t real = 0;
    std::uint64_t elapsed = 0;
    std::uint64_t local = 0;

private:
    std::vector<Property> properties() override { return {{"real", &real}, {"elapsed", &elapsed}, {"local", &local}}; }
};

}  // namespace kavio
