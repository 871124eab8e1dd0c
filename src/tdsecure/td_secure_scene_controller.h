#pragma once

#include "models/td_secure_messages.h"
#include "tdsecure/abstract_scene_controller.h"
#include "util/event.h"

#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// Runs the issuer's pages in the secure scene, and tells when one has ended and when the person closed the screen.
/// One for all facades of the process, for as long as one of them uses it. Main thread only.
class TDSecureSceneController final : public AbstractSceneController<TDSecureScene>, public TDSecureSceneDelegate {
public:
    using SceneEvent = Event<TDSecureSceneController>;

    /// Takes one use of the shared controller, which is made when nobody uses it yet.
    static std::shared_ptr<TDSecureSceneController> takeUse();

    /// A page has sent the web view to the loopback address, which is `mRedirectedUrl`.
    std::shared_ptr<SceneEvent> tdSecureFinished;
    /// The person has closed the screen, or the end of an enrolment has. It is gone already.
    std::shared_ptr<SceneEvent> tdSecureWindowClosed;
    /// What the scene loads once its view has loaded: a page's address or, for a fingerprint, an HTML document.
    std::string mUrl;
    TDSFlowType mFlow = TDSFlowType::UNKNOWN;
    /// The last one seen; a close does not clear it.
    std::optional<std::string> mRedirectedUrl;

    void loadContent();
    /// Closes the screen; whoever still waits for a page hears of that.
    void endPage();

    /// Gives back the use of `owner`, with what it attached to both events. With the last use the scene goes away too.
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
