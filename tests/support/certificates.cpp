#include "support/certificates.h"

#include <openssl/crypto.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <stdexcept>

namespace kavio::test {
namespace {

// As the library does, which comes second here: a network thread may outlive the main thread's last test.
[[maybe_unused]] const int withoutExitHandler = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);

constexpr std::chrono::hours day(24);

void require(bool succeeded) {
    if (!succeeded) throw std::runtime_error("OpenSSL made no certificate");
}

/// Signed by `issuer`, or by itself. Clients find an authority by its name: each has another one.
Identity make(const std::string& name, int extensionKind, const std::string& extensionValue,
              std::chrono::hours validFor, const Identity* issuer = nullptr) {
    static std::atomic<int> made = 0;
    Identity identity{{X509_new(), &X509_free}, {EVP_EC_gen("P-256"), &EVP_PKEY_free}};
    const auto& signer = issuer == nullptr ? identity : *issuer;
    auto* certificate = identity.certificate.get();
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++made);
    X509_set_version(certificate, X509_VERSION_3);
    X509_set_pubkey(certificate, identity.key.get());
    X509_gmtime_adj(X509_getm_notBefore(certificate), -std::chrono::seconds(2 * day).count());
    X509_gmtime_adj(X509_getm_notAfter(certificate), std::chrono::seconds(validFor).count());
    const auto subject = name + " " + std::to_string(made);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(subject.c_str()), -1, -1, 0);
    X509_set_issuer_name(certificate, X509_get_subject_name(signer.certificate.get()));
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, nullptr, extensionKind, extensionValue.c_str()), &X509_EXTENSION_free);
    require(X509_add_ext(certificate, extension.get(), -1) == 1);
    require(X509_sign(certificate, signer.key.get(), EVP_sha256()) != 0);
    return identity;
}

}  // namespace

std::string Identity::pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
    require(PEM_write_bio_X509(memory.get(), certificate.get()) == 1);
    require(!key || PEM_write_bio_PrivateKey(memory.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

CertificateAuthority::CertificateAuthority()
    : mIdentity(make("Authority", NID_basic_constraints, "critical,CA:TRUE", day)) {}

Identity CertificateAuthority::issue(const std::string& host, std::chrono::hours validFor) const {
    return make(host, NID_subject_alt_name, "DNS:" + host, validFor, &mIdentity);
}

Identity selfSigned(const std::string& host) { return make(host, NID_subject_alt_name, "DNS:" + host, day); }

}  // namespace kavio::test
