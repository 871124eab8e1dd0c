#include "output.h"

#include <cstdio>
#include <cstdlib>

namespace kavio::wallet {

void writeLine(const Json& json) {
    const auto line = lineOf(json) + '\n';
    if (std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fflush(stdout) == 0) return;
    std::perror("kavio-wallet: standard output");
    std::_Exit(EXIT_FAILURE);
}

}  // namespace kavio::wallet
