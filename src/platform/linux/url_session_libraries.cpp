#include "platform/linux/url_session_libraries.h"

#include "platform/background_step.h"

#include <curl/curl.h>
#include <openssl/crypto.h>
#include <openssl/decoder.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/rand.h>
#include <openssl/ssl.h>

#include <new>

namespace kavio {
namespace {

template <class Algorithm>
bool canFetch(Algorithm* (*fetch)(OSSL_LIB_CTX*, const char*, const char*), void (*release)(Algorithm*),
              const char* name) {
    auto* const algorithm = fetch(nullptr, name, nullptr);
    release(algorithm);
    return algorithm != nullptr;
}

bool canPrepareOpenssl() {
    unsigned char random = 0;
    return SSL_get_ex_data_X509_STORE_CTX_idx() >= 0 && RAND_bytes(&random, 1) == 1 &&
           canFetch(EVP_MD_fetch, EVP_MD_free, "SHA256") &&
           canFetch(EVP_CIPHER_fetch, EVP_CIPHER_free, "AES-128-GCM") &&
           canFetch(EVP_MAC_fetch, EVP_MAC_free, "HMAC") && canFetch(EVP_KDF_fetch, EVP_KDF_free, "HKDF") &&
           canFetch(EVP_RAND_fetch, EVP_RAND_free, "CTR-DRBG") && canFetch(EVP_KEYMGMT_fetch, EVP_KEYMGMT_free, "EC") &&
           canFetch(EVP_KEYEXCH_fetch, EVP_KEYEXCH_free, "X25519") &&
           canFetch(EVP_SIGNATURE_fetch, EVP_SIGNATURE_free, "ECDSA") &&
           canFetch(EVP_ASYM_CIPHER_fetch, EVP_ASYM_CIPHER_free, "RSA") &&
           canFetch(EVP_KEM_fetch, EVP_KEM_free, "RSA") && canFetch(OSSL_DECODER_fetch, OSSL_DECODER_free, "EC");
}

}  // namespace

void initializeLibraries() {
    static const bool done = [] {
        // A platform may live until the process ends, and OpenSSL's exit handler would pull its tables from under
        // whoever still uses it. If another library has already used OpenSSL, it is too late to ask for no handler.
        const bool isReady = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1 &&
                             OPENSSL_init_ssl(0, nullptr) == 1 && curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
        BackgroundStep::endAtExit();
        return isReady;
    }();
    if (!done) throw std::bad_alloc();
}

void prepareOpenssl() {
    const BackgroundStep step;
    [[maybe_unused]] static const bool done = canPrepareOpenssl();  // if not, connections say what is missing
}

}  // namespace kavio
