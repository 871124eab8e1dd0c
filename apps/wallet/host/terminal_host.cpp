#include "host/device.h"
#include "host/host.h"

#include <kavio/platform/run_loop.h>

namespace kavio::wallet {

namespace {

class TerminalHost final : public Host {
public:
    explicit TerminalHost(const Options& options) {
        install(makeLinuxPlatform(deviceOptions(options, mMainQueue)), options);
    }

    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) override {
        return mMainQueue->runUntil(done, limit);
    }

private:
    const std::shared_ptr<RunLoop> mMainQueue = std::make_shared<RunLoop>();
};

}  // namespace

std::unique_ptr<Host> makeTerminalHost(const Options& options) { return std::make_unique<TerminalHost>(options); }

}  // namespace kavio::wallet
