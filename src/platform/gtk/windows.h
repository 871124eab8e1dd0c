#pragma once

#include "platform/gtk/screens.h"

#include <filesystem>

namespace kavio {

/// The windows of the host's application.
class GtkWindows final : public Windows {
public:
    GtkWindows(GtkApplication* application, std::filesystem::path authorities)
        : mApplication(retained(application)), mAuthorities(std::move(authorities)) {}

    std::shared_ptr<Window> keyWindow() const override;
    std::shared_ptr<TDSecureScene> makeScene() override;

private:
    const ObjectPointer<GtkApplication> mApplication;
    const std::filesystem::path mAuthorities;
};

}  // namespace kavio
