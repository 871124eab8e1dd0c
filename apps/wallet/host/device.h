#pragma once

#include "host/options.h"

#include <kavio/platform/linux.h>

namespace kavio::wallet {

/// The options that every host of this program passes to the device's platform.
LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue);

/// The log's descriptor, for adding to it; -1 if it cannot be written to. Only its owner may read what it makes.
int openRequestLog(const std::filesystem::path& file);
/// Makes it the process's platform, with a log of its requests if the options ask for one.
void install(Platform platform, const Options& options);

}  // namespace kavio::wallet
