#pragma once

#include "jsonl/facades.h"

#include <istream>

namespace kavio::wallet {

/// The wallet for programs: reads operations as JSON lines until the end of input, carries them out in order, and
/// writes what is reported as JSON lines. docs/wallet.md is its contract.
void drive(std::istream& input, Facades& facades);

}  // namespace kavio::wallet
