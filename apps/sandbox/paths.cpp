#include "paths.h"

#include "service.h"

#include <fmt/format.h>

#include <algorithm>

namespace kavio::sandbox {
namespace {

/// Whether there is a text that both patterns match: a fault's, in which "*" stands for any text, and a known one, in
/// which it stands for a segment.
bool canMeet(std::string_view left, std::string_view right) {
    // The columns of a table, one row for each end of `left`: whether it meets each end of `right`.
    std::vector<bool> row(right.size() + 1, false);
    row.back() = true;
    for (auto j = right.size(); j-- > 0;) row[j] = row[j + 1] && right[j] == '*';
    for (auto i = left.size(); i-- > 0;) {
        auto above = row;
        row.back() = above.back() && left[i] == '*';
        for (auto j = right.size(); j-- > 0;)
            row[j] = left[i] == '*' || right[j] == '*' ? (above[j] && left[i] != '/') || row[j + 1]
                                                       : above[j + 1] && left[i] == right[j];
    }
    return row.front();
}

}  // namespace

std::vector<KnownPath> knownPaths() {
    std::vector<KnownPath> paths{
        {"POST", "/acs/fingerprint/*"}, {"", "/acs/challenge/*"}, {"", "/acs/frame/*"}, {"", "/acs/gallery/*/*"}};
    for (const auto& route : allRoutes()) paths.push_back({route.method, route.path});
    return paths;
}

std::string faultWarning(std::string_view path, std::string_view method) {
    // The tables above know no other wildcards.
    if (path.find_first_of("?[\\") != std::string_view::npos) return {};
    static const auto known = knownPaths();
    auto met = known;
    std::erase_if(met, [&](const auto& each) { return !canMeet(path, each.path); });
    if (met.empty())
        return path.starts_with(basePath) ? "no request has this path: leave out /v1" : "no request has this path";
    const bool hasMethod = std::ranges::any_of(
        met, [&](const auto& each) { return method.empty() || each.method.empty() || each.method == method; });
    return hasMethod ? "" : fmt::format("no request with this path is a {}", method);
}

}  // namespace kavio::sandbox
