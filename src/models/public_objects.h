#pragma once

#include <utility>
#include <vector>

namespace kavio {

/// The public object of each record, in the same order. Each record has its own `publicObject` beside it.
template <class Model>
auto publicObjects(std::vector<Model> models) {
    std::vector<decltype(publicObject(std::declval<Model>()))> objects;
    objects.reserve(models.size());
    for (auto& model : models) objects.push_back(publicObject(std::move(model)));
    return objects;
}

}  // namespace kavio
