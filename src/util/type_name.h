#pragma once

#include <string>
#include <typeinfo>

namespace kavio {

/// The name of a type as its declaration spells it, without namespaces: "TDSecureSceneController".
std::string typeName(const std::type_info& type);

}  // namespace kavio
