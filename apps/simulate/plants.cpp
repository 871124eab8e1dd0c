#include "plants.h"

#include "planted.h"

#include <algorithm>

namespace kavio::simulate {

std::vector<std::string> plantedFaults() { return {std::begin(kavio::plantedFaults), std::end(kavio::plantedFaults)}; }

bool switchOn(const std::string& fault) {
    if (std::ranges::find(kavio::plantedFaults, fault) == std::end(kavio::plantedFaults)) return false;
    theFault = fault;
    return true;
}

}  // namespace kavio::simulate
