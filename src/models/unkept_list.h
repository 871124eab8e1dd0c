#pragma once

#include "models/json/keyed_container.h"

#include <cstddef>

namespace kavio {

/// A list that a reply must have right, although nobody needs its elements.
template <class T>
struct UnkeptList {
    std::size_t size = 0;

    static UnkeptList decode(const DecodedValue& list) {
        ArrayReader reader(list);
        while (!reader.atEnd()) reader.next<T>();
        return {reader.size()};
    }
};

}  // namespace kavio
