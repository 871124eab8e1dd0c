#pragma once

#include <stdexcept>
#include <string>

namespace kavio::wallet {

/// Why there is no code to be had from a picture, as a sentence for people.
struct PictureProblem : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The text of the QR code in the picture, a file of any usual format; throws `PictureProblem` unless there is exactly
/// one. What the picture is called in that sentence is `name`.
std::string textOfQrCode(const std::string& file, const std::string& name);

}  // namespace kavio::wallet
