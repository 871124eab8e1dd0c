#pragma once

#include "models/td_secure_messages.h"
#include "tdsecure/abstract_scene_controller.h"
#include "util/event.h"

#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// Runs the issuer's pages in the secure scene, and reports when one has ended and when the screen has gone before
/// that. All facades of the process share one, for as long as any of them uses it. Main thread only.
class TDSecureSceneController final : public AbstractSceneController<TDSecureScene>, public TDSecureSceneDelegate {
public:
    using SceneEvent = Event<TDSecureSceneController>;

    /// Takes one use of the shared controller, which is made if nobody is using it yet.
    static std::shared_ptr<TDSecureSceneController> takeUse();

    /// A page has sent the web view to the loopback address, which is `mRedirectedUrl`.
    std::shared_ptr<SceneEvent> tdSecureFinished;
    /// The person has closed the screen, which is already gone.
    std::shared_ptr<SceneEvent> tdSecureWindowClosed;
    /// The library has taken the screen away: for another facade's page, or because nobody uses the controller any
    /// more.
    std::shared_ptr<SceneEvent> tdSecureWindowTaken;
    /// What the scene loads once its view has loaded: a page's address or, for a fingerprint, an HTML document.
    std::string mUrl;
    TDSFlowType mFlow = TDSFlowType::UNKNOWN;
    /// The last one seen; a close does not clear it.
    std::optional<std::string> mRedirectedUrl;

    void loadContent();
    /// Takes the screen away, if there is one, and tells whoever is still waiting for its page.
    void takePage();

    /// Removes what `owner` attached to the events.
    void detach(const void* owner);
    /// Gives up `owner`'s use, along with what it attached to the events. The last use takes the screen away, too.
    void release(const void* owner) override;

    void onViewDidLoad() override;
    void onRedirect(const std::optional<std::string>& url) override;
    void onCloseClicked() override;

private:
    TDSecureSceneController() = default;
    static std::shared_ptr<TDSecureSceneController> make();
    static std::shared_ptr<TDSecureSceneController>& shared();
    void closeAndTell(SceneEvent& event);

    int mUserCount = 0;
};

}  // namespace kavio
