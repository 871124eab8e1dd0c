#include "platform/linux/icu.h"
#include "platform/linux/icu_text.h"

#include <unicode/regex.h>

namespace kavio {
namespace {

// Texts come from QR codes: one designed to make the engine backtrack must not hold up the wallet.
constexpr std::int32_t timeLimit = 500;  // in ICU's steps, which take about a millisecond each
constexpr std::int32_t stackLimit = 4 * 1024 * 1024;

class IcuRegularExpression final : public RegularExpression {
public:
    std::variant<std::vector<Match>, Invalid> matches(std::string_view pattern, std::string_view text) const override {
        UErrorCode status = U_ZERO_ERROR;
        const auto input = toIcu(text);
        icu::RegexMatcher matcher(toIcu(pattern), input, 0, status);
        expectMemory(status);
        if (U_FAILURE(status)) return Invalid{u_errorName(status)};
        matcher.setTimeLimit(timeLimit, status);
        matcher.setStackLimit(stackLimit, status);

        std::vector<Match> found;
        while (matcher.find(status)) {
            Match match;
            for (std::int32_t group = 0; group <= matcher.groupCount(); ++group) {
                match.push_back(fromIcu(matcher.group(group, status)));
            }
            found.push_back(std::move(match));
        }
        expectMemory(status);
        if (U_FAILURE(status)) found.clear();
        return found;
    }
};

}  // namespace

std::shared_ptr<RegularExpression> makeIcuRegularExpression() { return std::make_shared<IcuRegularExpression>(); }

}  // namespace kavio
