#pragma once

#include <curl/curl.h>

#include <string>

namespace kavio {

/// What every connection demands of its server. For CURLOPT_SSL_CTX_FUNCTION, which libcurl calls when it is done with
/// the settings of a new connection: the rules replace what it, the environment and OpenSSL's configuration have set
/// there, and touch nothing that the host application's own connections share.
CURLcode applyTlsProfile(CURL* easy, void* context, void* user);

/// What is wrong with a certificate, in words. `verdict` is what CURLINFO_SSL_VERIFYRESULT says of it.
std::string certificateFault(long verdict);

}  // namespace kavio
