#pragma once

#include "models/json/keyed_container.h"

#include <utility>
#include <vector>

namespace kavio {

// The public object of a record is made by the `publicObject` that stands beside it.

template <class Record>
auto publicObjects(std::vector<Record> records) {
    std::vector<decltype(publicObject(std::declval<Record>()))> objects;
    objects.reserve(records.size());
    for (auto& record : records) objects.push_back(publicObject(std::move(record)));
    return objects;
}

/// A list of `Record`s in a reply, as the public objects that they come to. Each is made as soon as its record is read:
/// the records of a long list are many times the size of what is kept of them.
template <class Record>
struct PublicList {
    std::vector<decltype(publicObject(std::declval<Record>()))> objects;

    static PublicList decode(const DecodedValue& value) {
        ArrayReader reader(value);
        PublicList list;
        list.objects.reserve(reader.size());
        while (!reader.atEnd()) list.objects.push_back(publicObject(reader.next().template as<Record>()));
        return list;
    }
};

}  // namespace kavio
