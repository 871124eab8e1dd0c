#include "output.h"

#include <cstdlib>

namespace kavio::wallet {

void writeLine(const std::string& line) {
    writeText(stdout, line + '\n');
    if (std::ferror(stdout) == 0) return;
    std::perror("kavio-wallet: standard output");
    std::_Exit(EXIT_FAILURE);
}

void writeText(std::FILE* file, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::fflush(file);
}

}  // namespace kavio::wallet
