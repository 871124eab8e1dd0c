#pragma once

#include <stdexcept>

namespace kavio {

/// A reply that is not what it should be. The text says where, and of what kind it is, but never the value, which may
/// be a card's.
class DecodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace kavio
