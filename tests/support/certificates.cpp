#include "support/certificates.h"

#include <arpa/inet.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <utility>

namespace kavio::test {
namespace {

using Key = std::shared_ptr<EVP_PKEY>;
using Certificate = std::shared_ptr<X509>;

void require(bool succeeded) {
    if (!succeeded) throw std::runtime_error("OpenSSL made no certificate");
}

template <class Write>
std::string pem(Write write) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
    require(memory && write(memory.get()) == 1);
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

Identity identity(const Certificate& certificate, const Key& key) {
    return {pem([&](BIO* to) { return PEM_write_bio_X509(to, certificate.get()); }), pem([&](BIO* to) {
                return PEM_write_bio_PrivateKey(to, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
            })};
}

Key newKey() {
    Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    require(key != nullptr);
    return key;
}

void extend(X509* certificate, int kind, const std::string& value) {
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str()), &X509_EXTENSION_free);
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

/// A certificate of `name` with `key`, not signed yet.
Certificate draft(const std::string& name, const Key& key, std::chrono::hours validFor) {
    Certificate certificate(X509_new(), &X509_free);
    require(certificate != nullptr);
    std::array<unsigned char, 8> serial{};
    require(RAND_bytes(serial.data(), serial.size()) == 1);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial[0] + 1ULL + (serial[1] << 8U));
    X509_set_version(certificate.get(), X509_VERSION_3);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509_set_pubkey(certificate.get(), key.get());
    const auto seconds = [](std::chrono::hours hours) {
        return static_cast<long>(std::chrono::seconds(hours).count());
    };
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), seconds(std::chrono::hours(-48)));
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), seconds(validFor));
    return certificate;
}

void sign(const Certificate& certificate, const X509_NAME* issuer, const Key& key) {
    require(X509_set_issuer_name(certificate.get(), issuer) == 1);
    require(X509_sign(certificate.get(), key.get(), EVP_sha256()) != 0);
}

Certificate draftForHost(const std::string& host, const Key& key, std::chrono::hours validFor) {
    auto certificate = draft(host, key, validFor);
    in6_addr address{};
    const bool isAddress =
        ::inet_pton(AF_INET, host.c_str(), &address) == 1 || ::inet_pton(AF_INET6, host.c_str(), &address) == 1;
    extend(certificate.get(), NID_subject_alt_name, (isAddress ? "IP:" : "DNS:") + host);
    return certificate;
}

}  // namespace

// Clients find an authority by its name.
static std::atomic<int> authorities = 0;

CertificateAuthority::CertificateAuthority()
    : mKey(newKey()), mCertificate(draft("Authority " + std::to_string(++authorities), mKey, std::chrono::hours(24))) {
    extend(mCertificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    sign(mCertificate, X509_get_subject_name(mCertificate.get()), mKey);
    mIdentity = identity(mCertificate, mKey);
}

Identity CertificateAuthority::issue(const std::string& host, std::chrono::hours validFor) const {
    const Key key = newKey();
    const Certificate certificate = draftForHost(host, key, validFor);
    sign(certificate, X509_get_subject_name(mCertificate.get()), mKey);
    return identity(certificate, key);
}

Identity selfSigned(const std::string& host) {
    const Key key = newKey();
    const Certificate certificate = draftForHost(host, key, std::chrono::hours(24));
    sign(certificate, X509_get_subject_name(certificate.get()), key);
    return identity(certificate, key);
}

}  // namespace kavio::test
