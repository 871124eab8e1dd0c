#include "host.h"

namespace kavio::wallet {

std::unique_ptr<Host> makeWindowHost(const Options&, std::string& reason) {
    reason = "this kavio-wallet was built without windows";
    return nullptr;
}

}  // namespace kavio::wallet
