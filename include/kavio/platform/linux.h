#pragma once

#include <kavio/export.h>
#include <kavio/platform/platform.h>
#include <kavio/platform/run_loop.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace kavio {

/// How the library's connections are made. A session has at most six to a host and twelve in all, with those that it
/// keeps; other requests wait for one. A request that has waited for its whole time-out fails with
/// `UrlError::timedOut`. Purchases have a session of their own.
struct UrlSessionConfiguration {
    /// PEM file of certificate authorities to trust instead of the system's; empty for the system's.
    std::filesystem::path certificateAuthorities{};
    /// "HOST:PORT" that every connection goes to, whatever host the URL names; URL, `Host` header, TLS server name and
    /// certificate check keep the URL's own host. For a service on this machine. Empty for none.
    std::string connectTo{};
    /// While a person reads, for up to two minutes after the last request, a connection that the service has closed is
    /// made anew at once, and so is one that has become too old to be trusted. The next query then need not wait for a
    /// connection. For that, the service gets a request that asks for nothing: "OPTIONS /". Purchases are not affected.
    bool warmsConnection = false;
};

/// What a host may set before the library's first use. The defaults are a desktop's.
struct LinuxPlatformOptions {
    UrlSessionConfiguration session{};  ///< how the library's connections are made
    /// Folder of the key/value suites, which hold the session. Empty for one of the application's own, so that the
    /// wallets of two vendors share nothing: `$XDG_DATA_HOME/kavio/IDENTIFIER`
    /// (`~/.local/share/kavio/IDENTIFIER`), where IDENTIFIER is the information value "CFBundleIdentifier" or,
    /// without one, the name under which the program was started. A program that may be started under several
    /// names, or that shares its name with others, as a script's interpreter does, should set one. Programs that
    /// are to share a session set the same folder and "KavioKey".
    std::filesystem::path storeDirectory{};
    /// The host application's information values, such as "KavioKey", "CFBundleIdentifier" and "CFBundleVersion".
    std::map<std::string, Bundle::Value, std::less<>> information{};
    /// The host application's translations of the library's texts.
    std::map<std::string, std::string, std::less<>> localizedStrings{};
    /// The queue of the host's main thread; null for a `RunLoop`, which the thread that makes the platform must run.
    std::shared_ptr<MainQueue> mainQueue{};
    /// Told, on the thread that noticed, which suite file was damaged and where it was set aside. `setAside` is empty
    /// if the file stays where it is but cannot be used, because it cannot be read, written or moved, or because a
    /// newer version of the library made it; the values then live in memory and end with the process. A file that was
    /// set aside still holds secrets such as a session token. It replaces an earlier one, and is removed when the suite
    /// is opened a week later or more. The function may use the library.
    std::function<void(const std::filesystem::path& damaged, const std::filesystem::path& setAside)> onStoreDamaged{};
};

/// The platform of a Linux device, on libcurl, OpenSSL, ICU and SQLite. It has no windows: `Kavio::gtk` adds them.
KAVIO_API Platform makeLinuxPlatform(LinuxPlatformOptions options = {});

}  // namespace kavio
