#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <chrono>
#include <memory>
#include <string>

namespace kavio::test {

/// What a server shows to its clients.
struct Identity {
    std::shared_ptr<X509> certificate;
    std::shared_ptr<EVP_PKEY> key;
    std::string pem() const;
};

/// A certificate authority that lives as long as a test.
class CertificateAuthority {
public:
    CertificateAuthority();

    /// The authority's own certificate, for clients to trust, as PEM.
    std::string certificate() const { return Identity{mIdentity.certificate, nullptr}.pem(); }
    /// `validFor` counts from now; a negative one gives a certificate that has expired.
    Identity issue(const std::string& host, std::chrono::hours validFor = std::chrono::hours(24)) const;

private:
    Identity mIdentity;
};

Identity selfSigned(const std::string& host);

}  // namespace kavio::test
