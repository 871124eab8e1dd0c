#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <chrono>
#include <memory>
#include <string>

namespace kavio::test {

/// What a server shows to its clients, as PEM.
struct Identity {
    std::string certificate;
    std::string key;
};

/// A certificate authority that lives as long as a test. Its certificates are for a host name or an IP address.
class CertificateAuthority {
public:
    CertificateAuthority();

    /// The authority's own certificate, for clients to trust, as PEM.
    const std::string& certificate() const { return mIdentity.certificate; }
    /// `validFor` counts from now; a negative one gives a certificate that has expired.
    Identity issue(const std::string& host, std::chrono::hours validFor = std::chrono::hours(24)) const;

private:
    std::shared_ptr<EVP_PKEY> mKey;
    std::shared_ptr<X509> mCertificate;
    Identity mIdentity;
};

Identity selfSigned(const std::string& host);

}  // namespace kavio::test
