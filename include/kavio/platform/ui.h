#pragma once

#include <kavio/export.h>

namespace kavio {

/// The host application's windows.
class KAVIO_API Windows {
public:
    virtual ~Windows() = default;
};

}  // namespace kavio
