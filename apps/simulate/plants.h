#pragma once

#include <string>
#include <vector>

namespace kavio::simulate {

/// The faults that plant.py has put into this program's copy of the library; all are off at first.
std::vector<std::string> plantedFaults();
/// False if there is no such fault.
bool switchOn(const std::string& fault);

}  // namespace kavio::simulate
