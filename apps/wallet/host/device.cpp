#include "device.h"

#include "host/output.h"

#include <kavio/platform/request_log.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <utility>

namespace kavio::wallet {

LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue) {
    auto device = driver::deviceOptions(options, std::move(mainQueue));
    device.information.emplace("CFBundleIdentifier", std::string("kavio-wallet"));  // whatever name it is started under
    device.onStoreDamaged = [](const std::filesystem::path& damaged, const std::filesystem::path& setAside) {
        writeText(stderr, setAside.empty()
                              ? fmt::format("kavio-wallet: {} cannot be used, so changes made now will be lost\n",
                                            damaged.string())
                              : fmt::format("kavio-wallet: {} was damaged; it is kept for a week as {}\n",
                                            damaged.string(), setAside.string()));
    };
    return device;
}

int openRequestLog(const std::filesystem::path& file) {
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

void install(Platform platform, const Options& options) {
    if (!options.requestLog.empty()) {
        const int file = openRequestLog(options.requestLog);
        platform = withRequestLog(std::move(platform), [file](std::string_view line) {
            const auto text = std::string(line) + '\n';
            // A disk that is full is no reason to stop: an order must be followed to its end.
            [[maybe_unused]] const auto written = ::write(file, text.data(), text.size());
        });
    }
    Platform::install(std::move(platform));
}

}  // namespace kavio::wallet
