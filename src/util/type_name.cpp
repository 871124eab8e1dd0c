#include "util/type_name.h"

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#endif

#include <cstdlib>
#include <memory>

namespace kavio {
namespace {

std::string readableName(const std::type_info& type) {
#if __has_include(<cxxabi.h>)
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    if (demangled) return demangled.get();
#endif
    return type.name();
}

}  // namespace

std::string typeName(const std::type_info& type) {
    const auto name = readableName(type);
    // Some compilers put "class" or "struct" before the namespaces. Whatever is in angle brackets has its
    // own qualifiers.
    const auto qualifier = name.find_last_of(": ", name.find('<'));
    return qualifier == std::string::npos ? name : name.substr(qualifier + 1);
}

}  // namespace kavio
