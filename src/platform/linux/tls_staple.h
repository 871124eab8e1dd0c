#pragma once

#include <openssl/ssl.h>

namespace kavio {

/// For SSL_CTX_set_tlsext_status_cb: refuses a certificate unless the OCSP answer that the server has stapled to it
/// says that it is good. No answer is as good, unless the certificate itself demands one ("must-staple").
int judgeStaple(SSL* tls, void* user);

}  // namespace kavio
