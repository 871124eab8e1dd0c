#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// What a server presents to its clients.
struct Identity {
    std::shared_ptr<X509> certificate;
    std::shared_ptr<EVP_PKEY> key;

    /// Certificate and key.
    std::string pem() const;
};

/// A certificate authority for one run.
class Authority {
public:
    static constexpr std::chrono::hours year{365 * 24};

    Authority();

    /// A server's identity for hosts and IP addresses. `validFor` counts from now; if it is negative, the certificate
    /// has already expired.
    Identity issue(const std::vector<std::string>& names, std::chrono::hours validFor = year) const;
    /// An identity that nobody vouches for.
    static Identity selfSigned(const std::vector<std::string>& names);
    /// The authority's own certificate, for clients to trust.
    std::string pem() const;

private:
    Identity mOwn;
};

}  // namespace kavio::sandbox
