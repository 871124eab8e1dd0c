#pragma once

#include <kavio/platform/device.h>

#include <memory>

namespace kavio {

std::shared_ptr<Digest> makeOpensslDigest();
std::shared_ptr<Base64> makeOpensslBase64();
std::shared_ptr<Uuid> makeOpensslUuid();

}  // namespace kavio
