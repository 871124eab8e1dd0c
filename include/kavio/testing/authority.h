#pragma once

#include <kavio/export.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace kavio::sandbox {
class Authority;
}  // namespace kavio::sandbox

namespace kavio::test {

/// What a server presents to its clients: certificate and key, in PEM.
struct Identity {
    std::string pem;  ///< both, one after the other
};

/// A certificate authority for one run.
class KAVIO_API Authority {
public:
    /// How long a certificate is valid unless a test says otherwise.
    static constexpr std::chrono::hours year{365 * 24};

    Authority();
    ~Authority();
    Authority(const Authority&) = delete;
    Authority& operator=(const Authority&) = delete;

    /// A server's identity for hosts and IP addresses. `validFor` counts from now; if it is negative, the certificate
    /// has already expired.
    Identity issue(const std::vector<std::string>& names, std::chrono::hours validFor = year) const;
    /// An identity that nobody vouches for.
    static Identity selfSigned(const std::vector<std::string>& names);
    /// The authority's own certificate, for clients to trust.
    std::string pem() const;

private:
    const std::unique_ptr<const sandbox::Authority> mOwn;
};

}  // namespace kavio::test
