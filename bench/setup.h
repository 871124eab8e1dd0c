#pragma once

#include <filesystem>
#include <string>

namespace kavio::bench {

/// The service's address, and a folder of ours with its authority's certificate: alone, and among the system's.
struct Setup {
    std::string address;
    std::filesystem::path folder;

    std::filesystem::path authority() const { return folder / "authority.pem"; }
    std::filesystem::path authorities() const { return folder / "authorities"; }
};

/// Called once, before the benchmarks run: installs the platform and logs in to the service.
void openSession(const Setup& setup);
void registerPreparing(const Setup& setup);
void registerCalls(const Setup& setup);
void registerPauses(const Setup& setup);

}  // namespace kavio::bench
