#pragma once

#include "models/json/keyed_container.h"

#include <kavio/product.h>

namespace kavio {

/// One product of the machine-products reply. The public object has exactly the same members, so the reply is read
/// straight into it.
using MachineProduct = Product;
template <>
struct Decoder<Product> {
    static Product decode(const KeyedContainer& in);
};

}  // namespace kavio
