#pragma once

#include <functional>
#include <memory>
#include <typeindex>

namespace kavio {
namespace detail {
std::shared_ptr<void> sharedInstance(std::type_index type, const std::function<std::shared_ptr<void>()>& make);
}

/// The process's only `T`, made on first use and kept for good. Safe from any thread; making a `T` may use
/// other instances.
template <class T>
std::shared_ptr<T> sharedInstance() {
    return std::static_pointer_cast<T>(detail::sharedInstance(typeid(T), [] { return std::make_shared<T>(); }));
}

/// Starts over, for tests: the next use makes a new instance of everything. The former ones end with what is returned,
/// unless somebody else uses them. No shipped code calls it.
std::shared_ptr<void> forgetSharedInstances();

}  // namespace kavio
