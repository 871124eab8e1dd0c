#include "command_line/translation.h"
#include "host/host.h"

#include <unistd.h>

#include <fstream>
#include <vector>

namespace kavio::wallet {

namespace {

std::vector<std::string> ownArguments() {
    std::ifstream file{"/proc/self/cmdline"};
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
    return arguments;
}

}  // namespace

// Windows need libraries that take longer to load than most commands take to run. They are linked into a separate
// program next to this one, which takes over here.
std::unique_ptr<Host> makeWindowHost(const Options&, std::string& reason) {
    std::error_code unknown;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path() / "kavio-wallet-window";
    auto arguments = ownArguments();
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    execv(program.c_str(), pointers.data());
    reason =
        tr("this kavio-wallet cannot open windows: {} is missing; `scripts/demo --window` builds it, and the package "
           "kavio-tools-gtk has it",
           program.string());
    return nullptr;
}

}  // namespace kavio::wallet
