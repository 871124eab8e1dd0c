#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <vector>

namespace kavio::sandbox {

template <auto free>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;
using PrivateKey = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;

/// A certificate authority that lives for one run, and the one server certificate that it signed.
struct Authority {
    explicit Authority(const std::vector<std::string>& names);

    Certificate authority;
    Certificate server;
    PrivateKey serverKey;

    std::string pem() const;
};

}  // namespace kavio::sandbox
