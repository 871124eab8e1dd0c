#pragma once

#include <cstdlib>

namespace kavio::test {

/// How long a test that can run for a long time does; in the suite it is short.
inline int fromEnvironment(const char* name, int otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr ? otherwise : std::atoi(value);
}

}  // namespace kavio::test
