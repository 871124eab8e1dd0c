#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// An object that is archived and unarchived by the names of its own properties.
class Serializable {
public:
    using Archive = std::map<std::string, std::uint64_t, std::less<>>;

    virtual ~Serializable() = default;

    std::optional<std::string> tag;

    Archive archive();
    /// Properties that `archive` lacks are zero afterwards, except the tag, which becomes none.
    void unarchive(const Archive& archive);

protected:
    struct Property {
        std::string_view name;
        std::uint64_t* value;
    };
    /// In the order of their declaration.
    virtual std::vector<Property> properties() = 0;
};

}  // namespace kavio
