#pragma once

#include <kavio/platform/key_value_store.h>

#include <memory>
#include <string_view>

namespace kavio {

/// The suite of that name and the host's "KavioKey": hosts that set the same key share a suite; hosts with different
/// ones do not. If the platform refuses to make a suite, this is the application's own store.
std::shared_ptr<KeyValueStore> openSuite(std::string_view name);

/// The suite for the library's own records, apart from the values that it shares with the application: payments that
/// are not over, and which service issued the session. Opened on first use.
std::shared_ptr<KeyValueStore> recordsSuite();

}  // namespace kavio
