#pragma once

#include <string>

namespace kavio::test {

/// One thing that an issuer's page does as soon as it is there.
struct Deed {
    /// How it goes to an address.
    enum class Kind {
        GO,               ///< goes there itself
        FRAME,            ///< shows it in a frame
        FRAMES_FOR_EVER,  ///< shows it in one new frame after the other
        OPEN,             ///< opens it in a new window
    };
    Kind kind;        ///< what it does
    std::string url;  ///< with this address
};

}  // namespace kavio::test
