#include "host.h"

#include "device.h"
#include "output.h"

#include <kavio/platform/run_loop.h>

#include <fmt/format.h>

#include <utility>

namespace kavio::wallet {

namespace {

class TerminalHost final : public Host {
public:
    explicit TerminalHost(const Options& options) {
        Platform::install(makeLinuxPlatform(deviceOptions(options, mMainQueue)));
    }

    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) override {
        return mMainQueue->runUntil(done, limit);
    }

private:
    const std::shared_ptr<RunLoop> mMainQueue = std::make_shared<RunLoop>();
};

}  // namespace

std::unique_ptr<Host> makeTerminalHost(const Options& options) { return std::make_unique<TerminalHost>(options); }

LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue) {
    LinuxPlatformOptions device;
    device.session.connectTo = options.connectTo;
    device.session.certificateAuthorities = options.certificateAuthorities;
    device.storeDirectory = options.storeDirectory;
    if (options.kavioKey) device.information.emplace("KavioKey", *options.kavioKey);
    if (options.bundleVersion) device.information.emplace("CFBundleVersion", *options.bundleVersion);
    device.mainQueue = std::move(mainQueue);
    device.onStoreDamaged = [](const std::filesystem::path& damaged, const std::filesystem::path& setAside) {
        writeText(stderr, fmt::format("kavio-wallet: {} was damaged; {}\n", damaged.string(),
                                      setAside.empty() ? "it could not be moved, so what you do now may be forgotten"
                                                       : "it is kept as " + setAside.string()));
    };
    return device;
}

}  // namespace kavio::wallet
