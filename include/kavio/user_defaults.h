#pragma once

#include <kavio/export.h>
#include <kavio/platform/key_value_store.h>

#include <memory>

namespace kavio {

/// The key/value suite in which the library keeps its state across launches; the host application may read and write
/// it. What cannot be written, for example on a full disk, still counts in this process: the write returns false and
/// reads give the new value.
KAVIO_API std::shared_ptr<KeyValueStore> userDefaults();

}  // namespace kavio
