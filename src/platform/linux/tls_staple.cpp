#include "platform/linux/tls_staple.h"

#include "platform/linux/release.h"

#include <openssl/err.h>
#include <openssl/ocsp.h>
#include <openssl/x509v3.h>

#include <memory>

namespace kavio {
namespace {

using Response = std::unique_ptr<OCSP_RESPONSE, Release<&OCSP_RESPONSE_free>>;
using Answers = std::unique_ptr<OCSP_BASICRESP, Release<&OCSP_BASICRESP_free>>;
using CertificateId = std::unique_ptr<OCSP_CERTID, Release<&OCSP_CERTID_free>>;
using Features = std::unique_ptr<TLS_FEATURE, Release<&TLS_FEATURE_free>>;

constexpr long toleratedClockSkew = 300;  // seconds

bool mustBeStapled(const X509* certificate) {
    constexpr int isAbsent = -1;
    int found = 0;
    const Features features(static_cast<TLS_FEATURE*>(X509_get_ext_d2i(certificate, NID_tlsfeature, &found, nullptr)));
    if (!features) return found != isAbsent;  // what cannot be read might demand it
    for (int i = 0; i < sk_ASN1_INTEGER_num(features.get()); ++i) {
        if (ASN1_INTEGER_get(sk_ASN1_INTEGER_value(features.get(), i)) == TLSEXT_TYPE_status_request) return true;
    }
    return false;
}

/// The authority chose how to hash what identifies the certificate.
bool isAbout(OCSP_CERTID* id, const X509* certificate, const X509* issuer) {
    ASN1_OBJECT* algorithm = nullptr;
    OCSP_id_get0_info(nullptr, &algorithm, nullptr, nullptr, id);
    const EVP_MD* digest = EVP_get_digestbyobj(algorithm);
    const CertificateId expected(digest == nullptr ? nullptr : OCSP_cert_to_id(digest, certificate, issuer));
    return expected && OCSP_id_cmp(expected.get(), id) == 0;
}

int verdictOf(OCSP_SINGLERESP* answer) {
    ASN1_GENERALIZEDTIME* from = nullptr;
    ASN1_GENERALIZEDTIME* until = nullptr;
    const int status = OCSP_single_get0_status(answer, nullptr, nullptr, &from, &until);
    if (status == V_OCSP_CERTSTATUS_REVOKED) return X509_V_ERR_CERT_REVOKED;
    // An answer without an end could be shown for ever.
    const bool isCurrent = until != nullptr && OCSP_check_validity(from, until, toleratedClockSkew, -1) == 1;
    return status == V_OCSP_CERTSTATUS_GOOD && isCurrent ? X509_V_OK : X509_V_ERR_OCSP_VERIFY_FAILED;
}

int verdictOf(OCSP_BASICRESP* answers, const X509* certificate, const X509* issuer) {
    for (int i = 0; i < OCSP_resp_count(answers); ++i) {
        OCSP_SINGLERESP* const answer = OCSP_resp_get0(answers, i);
        // OpenSSL's own query of the identifier takes one that may be changed.
        auto* const id = const_cast<OCSP_CERTID*>(OCSP_SINGLERESP_get0_id(answer));
        if (isAbout(id, certificate, issuer)) return verdictOf(answer);
    }
    return X509_V_ERR_OCSP_VERIFY_FAILED;
}

int verdictOnStaple(SSL* tls) {
    STACK_OF(X509)* const chain = SSL_get0_verified_chain(tls);
    // There is no chain if a TLS session is taken up again, whose server was judged when it began. Where the
    // certificate is trusted itself, no authority can revoke it.
    if (sk_X509_num(chain) < 2) return X509_V_OK;
    const X509* const certificate = sk_X509_value(chain, 0);

    const unsigned char* bytes = nullptr;
    const long length = SSL_get_tlsext_status_ocsp_resp(tls, &bytes);
    if (bytes == nullptr) return mustBeStapled(certificate) ? X509_V_ERR_OCSP_VERIFY_NEEDED : X509_V_OK;

    const Response response(d2i_OCSP_RESPONSE(nullptr, &bytes, length));
    const bool isAnswered = response && OCSP_response_status(response.get()) == OCSP_RESPONSE_STATUS_SUCCESSFUL;
    const Answers answers(isAnswered ? OCSP_response_get1_basic(response.get()) : nullptr);
    X509_STORE* const authorities = SSL_CTX_get_cert_store(SSL_get_SSL_CTX(tls));
    if (!answers || OCSP_basic_verify(answers.get(), chain, authorities, 0) != 1) return X509_V_ERR_OCSP_VERIFY_FAILED;
    return verdictOf(answers.get(), certificate, sk_X509_value(chain, 1));
}

}  // namespace

int judgeStaple(SSL* tls, void*) {
    const int verdict = verdictOnStaple(tls);
    ERR_clear_error();  // of answers that cannot be read
    if (verdict == X509_V_OK) return 1;
    // libcurl looks at the oldest error, and asks for the verdict if that is a failed verification.
    ERR_raise(ERR_LIB_SSL, SSL_R_CERTIFICATE_VERIFY_FAILED);
    SSL_set_verify_result(tls, verdict);
    return 0;
}

}  // namespace kavio
