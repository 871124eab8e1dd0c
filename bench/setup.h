#pragma once

#include <filesystem>
#include <string>

namespace kavio::bench {

/// Where the service listens, and a folder of ours with its authority's certificate.
struct Setup {
    std::string address;
    std::filesystem::path folder;

    std::filesystem::path authority() const { return folder / "authority.pem"; }
};

/// Once, before the benchmarks run: installs the platform and opens a session at the service.
void openSession(const Setup& setup);
void registerPreparing(const Setup& setup);
void registerCalls(const Setup& setup);

/// A folder like the system's one of authorities, with ours among them.
std::filesystem::path systemAuthoritiesAndOurs(const Setup& setup);

}  // namespace kavio::bench
