#include "util/kavio_utils.h"

#include "util/trace.h"

#include <kavio/platform/platform.h>

namespace kavio {

std::vector<std::string> KavioUtils::matches(std::string_view pattern, std::string_view text) {
    std::vector<std::string> texts;
    auto found = Platform::current().regularExpression->matches(pattern, text);
    if (const auto* invalid = std::get_if<RegularExpression::Invalid>(&found)) {
        trace("KavioUtils", [&] { return SafeMessage{"invalid regex: " + invalid->description}; });
        return texts;
    }
    for (auto& match : std::get<std::vector<RegularExpression::Match>>(found))
        texts.push_back(std::move(match.front()));
    return texts;
}

}  // namespace kavio
