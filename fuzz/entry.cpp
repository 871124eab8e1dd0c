#include "fuzz.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kavio::fuzz::tryInput(kavio::fuzz::Input({reinterpret_cast<const char*>(data), size}));
    return 0;
}
