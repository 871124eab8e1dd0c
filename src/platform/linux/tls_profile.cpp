#include "platform/linux/tls_profile.h"

#include "platform/linux/tls_names.h"
#include "platform/linux/tls_staple.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <cstdint>

namespace kavio {
namespace {

// TLS 1.0 and 1.1 sign handshakes with MD5 and SHA-1. OpenSSL's configuration may allow them, or forbid TLS 1.3.
constexpr int oldestProtocol = TLS1_2_VERSION;
constexpr int newestProtocol = TLS1_3_VERSION;

// Only ECDHE, so that a key stolen later opens no recorded connection, and only ciphers that authenticate what they
// encrypt: CBC can be made to leak its padding. All ciphers of TLS 1.3 are like that.
constexpr const char* ciphersOfTls12 =
    "ECDHE-ECDSA-AES128-GCM-SHA256:ECDHE-RSA-AES128-GCM-SHA256:"
    "ECDHE-ECDSA-AES256-GCM-SHA384:ECDHE-RSA-AES256-GCM-SHA384:"
    "ECDHE-ECDSA-CHACHA20-POLY1305:ECDHE-RSA-CHACHA20-POLY1305";
constexpr const char* ciphersOfTls13 = "TLS_AES_128_GCM_SHA256:TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256";

// The curves that every server has. They bind the server's own key, too.
constexpr const char* groups = "X25519:P-256:P-384";

// How the server may sign the handshake: no SHA-1 and no DSA.
constexpr const char* signatures =
    "ECDSA+SHA256:ECDSA+SHA384:RSA-PSS+SHA256:RSA-PSS+SHA384:RSA-PSS+SHA512:RSA+SHA256:RSA+SHA384:RSA+SHA512";

// 112 bits at least, for the keys and the signatures of the whole chain: RSA from 2048 bits on, no SHA-1, no MD5.
constexpr int securityLevel = 2;

// These are all the options: whatever else OpenSSL's configuration may have set is cleared, such as connecting to
// servers without secure renegotiation. Compression would tell an observer about the content, and renegotiation lets a
// server become another one halfway. Middleboxes take the handshake of TLS 1.3 for one that they know.
constexpr std::uint64_t options = SSL_OP_NO_COMPRESSION | SSL_OP_NO_RENEGOTIATION | SSL_OP_ENABLE_MIDDLEBOX_COMPAT;

/// Called for each certificate of the chain, from the authority's on, with OpenSSL's own verdict.
int verify(int isValid, X509_STORE_CTX* chain) {
    if (isValid == 0) ERR_clear_error();  // libcurl looks only at the oldest error, which must be that it is not valid
    if (isValid == 0 || X509_STORE_CTX_get_error_depth(chain) > 0) return isValid;
    const int verdict = judgeNames(chain);
    if (verdict != X509_V_OK) X509_STORE_CTX_set_error(chain, verdict);
    return verdict == X509_V_OK ? 1 : 0;
}

bool limitProtocol(SSL_CTX* context) {
    SSL_CTX_clear_options(context, SSL_CTX_get_options(context));
    SSL_CTX_set_options(context, options);
    SSL_CTX_set_security_level(context, securityLevel);
    return SSL_CTX_set_min_proto_version(context, oldestProtocol) == 1 &&
           SSL_CTX_set_max_proto_version(context, newestProtocol) == 1 &&
           SSL_CTX_set_cipher_list(context, ciphersOfTls12) == 1 &&
           SSL_CTX_set_ciphersuites(context, ciphersOfTls13) == 1 && SSL_CTX_set1_groups_list(context, groups) == 1 &&
           SSL_CTX_set1_sigalgs_list(context, signatures) == 1;
}

bool verifyServer(SSL_CTX* context) {
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, &verify);
    // A certificate is asked about at no third party; the server brings the answer along.
    return SSL_CTX_set_tlsext_status_type(context, TLSEXT_STATUSTYPE_ocsp) == 1 &&
           SSL_CTX_set_tlsext_status_cb(context, &judgeStaple) == 1;
}

}  // namespace

CURLcode applyTlsProfile(CURL*, void* context, void*) {
    auto* const tls = static_cast<SSL_CTX*>(context);
    // libcurl writes the keys of connections to the file that SSLKEYLOGFILE names.
    SSL_CTX_set_keylog_callback(tls, nullptr);
    return limitProtocol(tls) && verifyServer(tls) ? CURLE_OK : CURLE_SSL_CIPHER;
}

std::string certificateFault(long verdict) {
    switch (verdict) {
        // If the chain is valid, libcurl compares addresses, and leaves no verdict of its own.
        case X509_V_OK:
        case X509_V_ERR_UNSPECIFIED:
        case X509_V_ERR_HOSTNAME_MISMATCH:
            return "it was issued for another host";
        case namesNoHost:
            return "it has no subject alternative name for a host";
        case X509_V_ERR_OCSP_VERIFY_NEEDED:
            return "it demands a proof that it is not revoked, and the host gave none";
        case X509_V_ERR_OCSP_VERIFY_FAILED:
            return "the host's proof that it is not revoked is not valid";
        default:
            return X509_verify_cert_error_string(verdict);
    }
}

}  // namespace kavio
