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

template <auto free>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Freed<X509_EXTENSION_free>> extension(
        check(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str())));
    check(X509_add_ext(certificate, extension.get(), -1));
}

/// Valid and with a key, but not signed yet.
Identity newIdentity(const std::string& name, std::chrono::seconds validFor) {
    constexpr long day = 86'400;  // seconds
    Identity made{{check(X509_new()), X509_free}, {check(EVP_EC_gen("P-256")), EVP_PKEY_free}};
    auto* const certificate = made.certificate.get();
    X509_set_version(certificate, X509_VERSION_3);
    // Random serial numbers: a client that remembers certificates of an earlier run must not see the same number again.
    std::int32_t serial = 0;
    check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), serial & 0x7fffffff);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate), static_cast<long>(validFor.count()));
    X509_set_pubkey(certificate, made.key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    return made;
}

void sign(const Identity& identity, const Identity& issuer) {
    auto* const certificate = identity.certificate.get();
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer.certificate.get()));
    addExtension(certificate, issuer.certificate.get(), NID_subject_key_identifier, "hash");
    check(X509_sign(certificate, issuer.key.get(), EVP_sha256()));
}

bool isAddress(const std::string& name) { return !name.empty() && std::isdigit(static_cast<unsigned char>(name[0])); }

/// Signed by itself if there is no issuer.
Identity newServer(const std::vector<std::string>& names, std::chrono::seconds validFor, const Identity* issuer) {
    std::string alternatives;
    for (const auto& name : names)
        alternatives += fmt::format("{}{}:{}", alternatives.empty() ? "" : ",", isAddress(name) ? "IP" : "DNS", name);
    auto server = newIdentity("Kavio Sandbox", validFor);
    const auto add = [&](int kind, const std::string& value) {
        addExtension(server.certificate.get(), issuer ? issuer->certificate.get() : nullptr, kind, value);
    };
    add(NID_basic_constraints, "critical,CA:FALSE");
    add(NID_key_usage, "critical,digitalSignature");
    add(NID_ext_key_usage, "serverAuth");
    add(NID_subject_alt_name, alternatives);
    if (issuer != nullptr) add(NID_authority_key_identifier, "keyid");
    sign(server, issuer != nullptr ? *issuer : server);
    return server;
}

std::string written(const Identity& identity, bool withKey) {
    const std::unique_ptr<BIO, Freed<BIO_free>> memory(check(BIO_new(BIO_s_mem())));
    check(PEM_write_bio_X509(memory.get(), identity.certificate.get()));
    if (withKey)
        check(PEM_write_bio_PrivateKey(memory.get(), identity.key.get(), nullptr, nullptr, 0, nullptr, nullptr));
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, std::size_t(length)};
}

}  // namespace

std::string Identity::pem() const { return written(*this, true); }

Authority::Authority() : mOwn(newIdentity("Kavio Sandbox Authority", year)) {
    auto* const certificate = mOwn.certificate.get();
    addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    sign(mOwn, mOwn);
}

Identity Authority::issue(const std::vector<std::string>& names, std::chrono::hours validFor) const {
    return newServer(names, validFor, &mOwn);
}

Identity Authority::selfSigned(const std::vector<std::string>& names) { return newServer(names, year, nullptr); }

std::string Authority::pem() const { return written(mOwn, false); }

}  // namespace kavio::sandbox
