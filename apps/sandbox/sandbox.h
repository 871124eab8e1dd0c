#pragma once

#include "controlled.h"
#include "options.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace kavio::sandbox {

/// A local stand-in for the payment service, over HTTPS on 127.0.0.1, with its own state and sample data.
/// Every function may be called on any thread. Tests in its process control it by these, clients through the control
/// endpoints.
class Sandbox : public Controlled {
public:
    using Options = sandbox::Options;

    /// Is listening once it has returned; throws std::runtime_error if it cannot.
    explicit Sandbox(Options options = {});
    /// Closes every connection, including those that a fault is delaying.
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    std::uint16_t port() const;
    /// "127.0.0.1:PORT"
    std::string address() const;
    /// Port of the issuer's pages over plain HTTP; 0 when there is none.
    std::uint16_t issuerPort() const;
    const std::filesystem::path& authorityFile() const;

private:
    struct Parts;
    explicit Sandbox(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> mParts;
};

}  // namespace kavio::sandbox
