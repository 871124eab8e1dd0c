#pragma once

#include <string>

namespace kavio::wallet {

/// The text of the QR code in the picture, a file of any usual format; throws `Failure` unless there is exactly one.
std::string textOfQrCode(const std::string& file);

}  // namespace kavio::wallet
