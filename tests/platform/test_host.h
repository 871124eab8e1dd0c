#pragma once

#include <kavio/platform/linux.h>
#include <kavio/testing/conformance/sessions.h>

#include <string>

namespace kavio::test {

/// For the Linux sessions of a test.
inline UrlSessionConfiguration configured(const std::string& address) {
    const auto reach = reaching(address);
    return {reach.authorities, reach.address};
}

}  // namespace kavio::test
