// ending_program FOLDER [after-openssl]: makes the platform and ends, while a network thread is still preparing
// OpenSSL. A program that has used OpenSSL before, as many do, has its exit handler, which frees what that thread is
// using.

#include <kavio/platform/linux.h>

#include <openssl/evp.h>

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    if (argc > 2) EVP_MD_free(EVP_MD_fetch(nullptr, "SHA1", nullptr));
    kavio::LinuxPlatformOptions options;
    options.storeDirectory = argv[1];
    kavio::Platform::install(kavio::makeLinuxPlatform(std::move(options)));
    return 0;
}
