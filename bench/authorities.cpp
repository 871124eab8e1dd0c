#include "setup.h"

#include <curl/curl.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace kavio::bench {
namespace {

/// The file name by which OpenSSL finds a certificate in a folder.
std::string lookUpName(const std::filesystem::path& certificate) {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(certificate.c_str(), "r"), &std::fclose);
    const std::unique_ptr<X509, decltype(&X509_free)> read(
        file ? PEM_read_X509(file.get(), nullptr, nullptr, nullptr) : nullptr, &X509_free);
    if (!read) throw std::runtime_error("There is no certificate in " + certificate.string() + ".");
    char name[20];
    std::snprintf(name, sizeof name, "%08lx.0", X509_subject_name_hash(read.get()));
    return name;
}

}  // namespace

std::filesystem::path systemAuthoritiesAndOurs(const Setup& setup) {
    auto folder = setup.folder / "authorities";
    if (!std::filesystem::create_directory(folder)) return folder;
    for (const auto& file : std::filesystem::directory_iterator(curl_version_info(CURLVERSION_NOW)->capath))
        std::filesystem::create_symlink(file.path(), folder / file.path().filename());
    std::filesystem::copy_file(setup.authority(), folder / lookUpName(setup.authority()));
    return folder;
}

}  // namespace kavio::bench
