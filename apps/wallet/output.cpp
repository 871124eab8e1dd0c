#include "output.h"

#include <cstdlib>
#include <iostream>

namespace kavio::wallet {

void writeLine(const Json& json) {
    const auto line = lineOf(json) + '\n';
    if (std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fflush(stdout) == 0) return;
    std::perror("kavio-wallet: standard output");
    std::_Exit(EXIT_FAILURE);
}

void writeText(std::FILE* file, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::fflush(file);
}

bool isOutputComplete() {
    std::cout.flush();
    return std::cout && std::ferror(stdout) == 0;
}

}  // namespace kavio::wallet
