#pragma once

#include "models/td_secure_messages.h"
#include "tdsecure/abstract_scene_controller.h"
#include "util/event.h"

#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// Runs the issuer's pages in the secure scene, and reports when one has ended and when the person has closed the
/// screen. All facades of the process share one, for as long as any of them uses it. Main thread only.
class TDSecureSceneController final : public AbstractSceneController<TDSecureScene>, public TDSecureSceneDelegate {
public:
    using SceneEvent = Event<TDSecureSceneController>;

    /// Takes one use of the shared controller, which is made if nobody is using it yet.
    static std::shared_ptr<TDSecureSceneController> takeUse();

    /// A page has sent the web view to the loopback address, which is `mRedirectedUrl`.
    std::shared_ptr<SceneEvent> tdSecureFinished;
    /// The screen was closed by the person, or because another page or nobody took its place. It is already gone.
    std::shared_ptr<SceneEvent> tdSecureWindowClosed;
    /// What the scene loads once its view has loaded: a page's address or, for a fingerprint, an HTML document.
    std::string mUrl;
    TDSFlowType mFlow = TDSFlowType::UNKNOWN;
    /// The last one seen; a close does not clear it.
    std::optional<std::string> mRedirectedUrl;

    void loadContent();
    /// Closes the screen and tells whoever is still waiting for its page.
    void endPage();

    /// Gives up `owner`'s use, along with what it attached to both events. The last use takes the scene away too.
    void release(const void* owner) override;

    void onViewDidLoad() override;
    void onRedirect(const std::optional<std::string>& url) override;
    void onCloseClicked() override;

private:
    TDSecureSceneController() = default;
    static std::shared_ptr<TDSecureSceneController> make();
    static std::shared_ptr<TDSecureSceneController>& shared();

    int mUserCount = 0;
};

}  // namespace kavio
