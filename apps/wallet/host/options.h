#pragma once

#include "driver/options.h"

namespace kavio::wallet {

/// The user's choices for the whole run.
struct Options : driver::Options {
    bool withWindow = false;
    std::filesystem::path requestLog{};  // empty for none
};

}  // namespace kavio::wallet
