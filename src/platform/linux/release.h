#pragma once

namespace kavio {

/// Lets a std::unique_ptr hold an object of a C library, which `release` frees.
template <auto release>
struct Release {
    void operator()(auto* object) const { release(object); }
};

}  // namespace kavio
