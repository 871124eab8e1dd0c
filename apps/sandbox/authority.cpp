#include "authority.h"

#include <fmt/format.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cctype>
#include <stdexcept>

namespace kavio::sandbox {
namespace {

template <class T>
T check(T result) {
    if (!result) throw std::runtime_error(std::string("certificate: ") + ERR_error_string(ERR_get_error(), nullptr));
    return result;
}

PrivateKey newKey() { return PrivateKey(check(EVP_EC_gen("P-256"))); }

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Freed<X509_EXTENSION_free>> extension(
        check(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str())));
    check(X509_add_ext(certificate, extension.get(), -1));
}

Certificate newCertificate(const std::string& name, EVP_PKEY* key) {
    constexpr long day = 86'400;  // seconds
    Certificate certificate(check(X509_new()));
    X509_set_version(certificate.get(), X509_VERSION_3);
    // Random serials: a client that remembers an earlier run's certificates must not meet the same number again.
    std::int32_t serial = 0;
    check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial & 0x7fffffff);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 365 * day);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    return certificate;
}

void sign(X509* certificate, X509* issuer, EVP_PKEY* issuerKey) {
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
    addExtension(certificate, issuer, NID_subject_key_identifier, "hash");
    check(X509_sign(certificate, issuerKey, EVP_sha256()));
}

bool isAddress(const std::string& name) { return !name.empty() && std::isdigit(static_cast<unsigned char>(name[0])); }

}  // namespace

Authority::Authority(const std::vector<std::string>& names) {
    const auto authorityKey = newKey();
    authority = newCertificate("Kavio Sandbox Authority", authorityKey.get());
    addExtension(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    sign(authority.get(), authority.get(), authorityKey.get());

    std::string alternatives;
    for (const auto& name : names)
        alternatives += fmt::format("{}{}:{}", alternatives.empty() ? "" : ",", isAddress(name) ? "IP" : "DNS", name);
    serverKey = newKey();
    server = newCertificate("Kavio Sandbox", serverKey.get());
    addExtension(server.get(), authority.get(), NID_basic_constraints, "critical,CA:FALSE");
    addExtension(server.get(), authority.get(), NID_key_usage, "critical,digitalSignature");
    addExtension(server.get(), authority.get(), NID_ext_key_usage, "serverAuth");
    addExtension(server.get(), authority.get(), NID_subject_alt_name, alternatives);
    addExtension(server.get(), authority.get(), NID_authority_key_identifier, "keyid");
    sign(server.get(), authority.get(), authorityKey.get());
}

std::string Authority::pem() const {
    const std::unique_ptr<BIO, Freed<BIO_free>> memory(check(BIO_new(BIO_s_mem())));
    check(PEM_write_bio_X509(memory.get(), authority.get()));
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, std::size_t(length)};
}

}  // namespace kavio::sandbox
