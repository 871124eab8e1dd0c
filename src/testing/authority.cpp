#include "sandbox/authority.h"

#include <kavio/testing/authority.h>

namespace kavio::test {

Authority::Authority() : mOwn(std::make_unique<const sandbox::Authority>()) {}
Authority::~Authority() = default;

Identity Authority::issue(const std::vector<std::string>& names, std::chrono::hours validFor) const {
    return {mOwn->issue(names, validFor).pem()};
}
Identity Authority::selfSigned(const std::vector<std::string>& names) {
    return {sandbox::Authority::selfSigned(names).pem()};
}
std::string Authority::pem() const { return mOwn->pem(); }

}  // namespace kavio::test
