#pragma once

#include "models/json/keyed_container.h"

#include <kavio/product.h>

namespace kavio {

/// One product of the machine-products reply. It has the members of the public object one for one, so it is read
/// straight into that.
using MachineProduct = Product;
template <>
struct Decoder<Product> {
    static Product decode(const KeyedContainer& in);
};

}  // namespace kavio
