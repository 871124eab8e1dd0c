#pragma once

#include <kavio/platform/start_over.h>

#include <memory>
#include <utility>

namespace kavio::test {

/// Makes `platform` the process's platform for as long as this lives, then restores the former one.
class InstalledPlatform {
public:
    explicit InstalledPlatform(Platform platform)
        : mFormer(startOver(std::make_unique<Platform>(std::move(platform)))) {}
    ~InstalledPlatform() { startOver(std::move(mFormer)); }
    InstalledPlatform(const InstalledPlatform&) = delete;
    InstalledPlatform& operator=(const InstalledPlatform&) = delete;

private:
    std::unique_ptr<Platform> mFormer;
};

}  // namespace kavio::test
