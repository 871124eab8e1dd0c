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
    std::shared_ptr<TDSecureScene> instantiateScene(std::string_view storyboard, std::string_view identifier) override;

private:
    const ObjectPointer<GtkApplication> mApplication;
    const std::filesystem::path mAuthorities;
};

}  // namespace kavio
