// ending_program FOLDER [after-openssl]
//     Ends while a network thread is still preparing OpenSSL. A program that has used OpenSSL before, as many do, has
//     its exit handler, which frees what that thread is using.
// ending_program FOLDER AUTHORITY ADDRESS MICROSECONDS
//     Ends that long after a request, whose reply may just be being read.

#include <kavio/kavio.h>
#include <kavio/platform/linux.h>

#include <openssl/evp.h>

#include <chrono>
#include <string>
#include <vector>

using namespace kavio;

namespace {

void endInFlight(LinuxPlatformOptions options, const std::vector<std::string>& arguments) {
    using Steady = std::chrono::steady_clock;
    options.session = {arguments[1], arguments[2]};
    Platform::install(makeLinuxPlatform(std::move(options)));
    static auto& wallet = *new Kavio({}, "api-key", Kavio::EnvironmentType::TEST);  // nobody destroys it
    wallet.login("49", "151234567");
    const auto end = Steady::now() + std::chrono::microseconds(std::stoi(arguments[3]));
    while (Steady::now() < end) continue;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty()) return 2;
    LinuxPlatformOptions options;
    options.storeDirectory = arguments[0];
    if (arguments.size() == 4) {
        endInFlight(std::move(options), arguments);
        return 0;
    }
    if (arguments.size() == 2) EVP_MD_free(EVP_MD_fetch(nullptr, "SHA1", nullptr));
    Platform::install(makeLinuxPlatform(std::move(options)));
    return 0;
}
