#include "platform/linux/tls_names.h"

#include "platform/linux/release.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <strings.h>

#include <memory>
#include <string_view>

namespace kavio {
namespace {

using Names = std::unique_ptr<GENERAL_NAMES, Release<&GENERAL_NAMES_free>>;
using Constraints = std::unique_ptr<NAME_CONSTRAINTS, Release<&NAME_CONSTRAINTS_free>>;

bool hasNameForHost(const X509* certificate) {
    const Names names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
    for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
        const int kind = sk_GENERAL_NAME_value(names.get(), i)->type;
        if (kind == GEN_DNS || kind == GEN_IPADD) return true;
    }
    return false;
}

bool isWithin(std::string_view host, std::string_view domain) {
    if (domain.size() > host.size()) return false;
    const auto end = host.substr(host.size() - domain.size());
    if (::strncasecmp(end.data(), domain.data(), domain.size()) != 0) return false;
    return domain.empty() || domain.front() == '.' || domain.size() == host.size() ||
           host[host.size() - domain.size() - 1] == '.';
}

bool excludes(const X509* authority, std::string_view host) {
    const Constraints constraints(
        static_cast<NAME_CONSTRAINTS*>(X509_get_ext_d2i(authority, NID_name_constraints, nullptr, nullptr)));
    const auto* excluded = constraints ? constraints->excludedSubtrees : nullptr;
    for (int i = 0; i < sk_GENERAL_SUBTREE_num(excluded); ++i) {
        const GENERAL_NAME* base = sk_GENERAL_SUBTREE_value(excluded, i)->base;
        if (base->type != GEN_DNS) continue;
        const auto* text = reinterpret_cast<const char*>(ASN1_STRING_get0_data(base->d.dNSName));
        if (isWithin(host, {text, static_cast<std::size_t>(ASN1_STRING_length(base->d.dNSName))})) return true;
    }
    return false;
}

/// OpenSSL compares constraints with the names as they are written: "*.shop.test" passes where "a.shop.test" is
/// excluded.
bool isExcluded(std::string_view host, const STACK_OF(X509) * chain) {
    for (int i = 1; i < sk_X509_num(chain); ++i) {
        if (excludes(sk_X509_value(chain, i), host)) return true;
    }
    return false;
}

}  // namespace

int judgeNames(X509_STORE_CTX* chain) {
    X509* const certificate = X509_STORE_CTX_get_current_cert(chain);
    // libcurl would look at the common name then, where a wildcard escapes an authority's name constraints.
    if (!hasNameForHost(certificate)) return namesNoHost;

    const auto* tls = static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(chain, SSL_get_ex_data_X509_STORE_CTX_idx()));
    const char* const host = SSL_get_servername(tls, TLSEXT_NAMETYPE_host_name);
    if (host == nullptr) return X509_V_OK;  // an address, which libcurl compares
    constexpr unsigned int rules = X509_CHECK_FLAG_NEVER_CHECK_SUBJECT | X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS;
    if (X509_check_host(certificate, host, 0, rules, nullptr) != 1) return X509_V_ERR_HOSTNAME_MISMATCH;
    return isExcluded(host, X509_STORE_CTX_get0_chain(chain)) ? X509_V_ERR_EXCLUDED_VIOLATION : X509_V_OK;
}

}  // namespace kavio
