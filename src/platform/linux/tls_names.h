#pragma once

#include <openssl/x509_vfy.h>

namespace kavio {

/// OpenSSL has no verdict of its own for a certificate without a subject alternative name for a host.
constexpr int namesNoHost = X509_V_ERR_APPLICATION_VERIFICATION;

/// Whether the server's certificate, the first of a chain that is valid, is for the host that the connection asks for:
/// X509_V_OK, or what is wrong.
int judgeNames(X509_STORE_CTX* chain);

}  // namespace kavio
