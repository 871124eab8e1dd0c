#pragma once

#include <kavio/date.h>
#include <kavio/platform/key_value_store.h>

#include <memory>
#include <optional>
#include <string_view>

namespace kavio {

struct AccountModel;

/// The keys of the suite; the library writes no other.
namespace keys {
inline constexpr std::string_view apiKey = "api_key";
inline constexpr std::string_view serviceName = "service_name";
inline constexpr std::string_view sessionToken = "session_token";
inline constexpr std::string_view pushToken = "push_token";
inline constexpr std::string_view account = "account";
inline constexpr std::string_view serverTime = "server_time";
inline constexpr std::string_view savedCpuTime = "saved_cpu_time";
inline constexpr std::string_view serverExpiredTime = "server_expired_time";
}  // namespace keys

/// The one suite that holds what the library keeps across launches. Safe from any thread.
class KavioUserDefaults {
public:
    static std::shared_ptr<KavioUserDefaults> shared();
    KavioUserDefaults();

    const std::shared_ptr<KeyValueStore> defualt;

    /// Without an account, removes the stored one.
    void saveAccount(const std::optional<AccountModel>& account);

    /// The server's clock at the last time sample; the device's time without one.
    Date getServerTime() const { return getDate(keys::serverTime); }
    /// The device's clock when the last time sample was stored; the device's time without one.
    Date getSavedCpuTime() const { return getDate(keys::savedCpuTime); }
    void setServerExpiredTime(std::optional<Date> date);
    std::optional<Date> getServerExpiredTime() const { return defualt->date(keys::serverExpiredTime); }

    /// The stored session token; empty without one.
    std::string sessionToken() const { return defualt->string(keys::sessionToken).value_or(""); }

private:
    Date getDate(std::string_view key) const;
};

}  // namespace kavio
