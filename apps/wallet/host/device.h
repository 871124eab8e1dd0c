#pragma once

#include "host/options.h"

#include <kavio/platform/linux.h>

namespace kavio::wallet {

/// What every kind of host of this program tells the device's platform.
LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue);

}  // namespace kavio::wallet
