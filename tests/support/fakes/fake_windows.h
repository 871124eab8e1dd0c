#pragma once

#include <kavio/platform/ui.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// A scripted user interface: one window with a dialog of the application's above its own screen, and what the library
/// does there as a list of short texts. Pages do what the test says.
class FakeWindows final : public Windows, public std::enable_shared_from_this<FakeWindows> {
public:
    std::shared_ptr<Window> keyWindow() const override;
    std::shared_ptr<WebScene> instantiateScene(std::string_view storyboard, std::string_view identifier) override;

    bool hasKeyWindow = true;
    /// "present", "hidden", "shown", "html DOCUMENT", "load URL SECONDS", "dismiss", each with "animated" where it is
    /// asked for.
    std::vector<std::string> log;

    /// Whether a scene is on the screen.
    bool hasScene() const { return mPresented != nullptr; }
    /// The page that the scene shows goes there; false when nobody lets it.
    bool navigate(const std::optional<std::string>& url) const;
    void pressClose() const;

private:
    class Screen;
    class Scene;
    class PageView;

    std::shared_ptr<SceneObserver> observer() const;

    Scene* mPresented = nullptr;
};

}  // namespace kavio::test
