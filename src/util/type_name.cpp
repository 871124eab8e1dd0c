#include "util/type_name.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace kavio {

std::string typeName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    std::string name = demangled ? demangled.get() : type.name();
    // What stands between angle brackets has qualifiers of its own.
    const auto qualifier = name.rfind("::", name.find('<'));
    return qualifier == std::string::npos ? name : name.substr(qualifier + 2);
}

}  // namespace kavio
