#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kavio::sandbox {

/// Something that a client can ask for, as a fault names it: below "/v1", or one of the issuer's pages.
struct KnownPath {
    std::string_view method;  // empty for any
    std::string_view path;    // "*" stands for a segment
};
std::vector<KnownPath> knownPaths();

/// What is wrong with a fault that no request can ever meet; empty if one can. An empty method stands for all.
std::string faultWarning(std::string_view path, std::string_view method);

}  // namespace kavio::sandbox
