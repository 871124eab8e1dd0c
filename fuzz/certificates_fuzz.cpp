// The names in a server's certificate. The first line is the host that is asked for. The rest are the values of two
// extensions in DER: the server's names, as many bytes as the first one says, and what its authority excludes.

#include "fuzz.h"
#include "platform/linux/release.h"
#include "platform/linux/tls_names.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>

namespace kavio::fuzz {
namespace {

using Certificate = std::unique_ptr<X509, Release<&X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Release<&X509_EXTENSION_free>>;
using Octets = std::unique_ptr<ASN1_OCTET_STRING, Release<&ASN1_OCTET_STRING_free>>;
using Judging = std::unique_ptr<X509_STORE_CTX, Release<&X509_STORE_CTX_free>>;
using Context = std::unique_ptr<SSL_CTX, Release<&SSL_CTX_free>>;
using Connection = std::unique_ptr<SSL, Release<&SSL_free>>;

Certificate certificate(int extension, const std::string& value) {
    Certificate made(X509_new());
    const Octets octets(ASN1_OCTET_STRING_new());
    ASN1_OCTET_STRING_set(octets.get(), reinterpret_cast<const unsigned char*>(value.data()), int(value.size()));
    const Extension added(X509_EXTENSION_create_by_NID(nullptr, extension, 0, octets.get()));
    X509_add_ext(made.get(), added.get(), -1);
    return made;
}

int verdict(const std::string& host, const std::string& names, const std::string& excluded) {
    static const Context context(SSL_CTX_new(TLS_client_method()));
    const Connection connection(SSL_new(context.get()));
    SSL_set_tlsext_host_name(connection.get(), host.c_str());

    const auto server = certificate(NID_subject_alt_name, names);
    const auto authority = certificate(NID_name_constraints, excluded);
    STACK_OF(X509)* const chain = sk_X509_new_null();
    for (const auto* each : {&server, &authority}) {
        X509_up_ref(each->get());
        sk_X509_push(chain, each->get());
    }
    const Judging judging(X509_STORE_CTX_new());
    X509_STORE_CTX_init(judging.get(), nullptr, server.get(), nullptr);
    X509_STORE_CTX_set_ex_data(judging.get(), SSL_get_ex_data_X509_STORE_CTX_idx(), connection.get());
    X509_STORE_CTX_set_current_cert(judging.get(), server.get());
    X509_STORE_CTX_set0_verified_chain(judging.get(), chain);  // frees it
    const int found = judgeNames(judging.get());
    ERR_clear_error();
    return found;
}

std::string withCaseSwapped(std::string text) {
    for (auto& c : text) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) c = static_cast<char>(c ^ 0x20);
    }
    return text;
}

}  // namespace

void tryInput(Input input) {
    const auto host = input.line().substr(0, TLSEXT_MAXLEN_host_name);
    std::string names;
    for (std::size_t left = input.byte(); left > 0; --left) names += static_cast<char>(input.byte());
    const auto excluded = input.rest();

    const int found = verdict(host, names, excluded);
    const int unlimited = verdict(host, names, "");
    must(found == unlimited || (unlimited == X509_V_OK && found == X509_V_ERR_EXCLUDED_VIOLATION),
         "what an authority excludes only ever forbids");
    must(found == verdict(withCaseSwapped(host), names, excluded), "hosts are the same in capital letters");
    must(verdict(host, "", excluded) == namesNoHost, "a certificate without names is for no host");
}

}  // namespace kavio::fuzz
