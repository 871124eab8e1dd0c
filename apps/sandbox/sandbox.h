#pragma once

#include "options.h"
#include "steering.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// A local stand-in for the payment service, over HTTPS on 127.0.0.1, with its own state and sample data.
/// Every function may be called on any thread.
class Sandbox final : public Steering {
public:
    using Options = sandbox::Options;

    /// Is listening once it has returned; throws std::runtime_error if it cannot.
    explicit Sandbox(Options options = {});
    /// Closes every connection, including those that a fault is delaying.
    ~Sandbox() override;
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    std::uint16_t port() const;
    /// "127.0.0.1:PORT"
    std::string address() const;
    /// Port of the issuer's pages over plain HTTP; 0 when there is none.
    std::uint16_t issuerPort() const;
    const std::filesystem::path& authorityFile() const;

    void fault(const std::string& path, Fault fault) override;
    void clearFaults() override;
    void setClockOffset(std::chrono::seconds offset) override;
    void setCode(const std::string& number, const std::string& code) override;
    void expireTokens() override;
    std::vector<Request> requests() const override;
    void clearRequests() override;
    nlohmann::json state() const override;

private:
    struct Parts;
    std::unique_ptr<Parts> mParts;
};

}  // namespace kavio::sandbox
