#include "reserved/serializable.h"

namespace kavio {

Serializable::Archive Serializable::archive() {
    Archive archive;
    for (const auto& [name, value] : properties()) archive.emplace(name, *value);
    return archive;
}

void Serializable::unarchive(const Archive& archive) {
    tag.reset();
    for (const auto& [name, value] : properties()) {
        const auto found = archive.find(name);
        *value = found == archive.end() ? 0 : found->second;
    }
}

}  // namespace kavio
