#include "tdsecure/td_secure_scene_controller.h"

#include "util/contained.h"
#include "util/shared_instance.h"
#include "util/trace.h"

#include <utility>

namespace kavio {
namespace {

constexpr const char* traceTag = "TDSecureSceneController";

}  // namespace

std::shared_ptr<TDSecureSceneController>& TDSecureSceneController::shared() {
    struct Slot {
        std::shared_ptr<TDSecureSceneController> controller;
    };
    return sharedInstance<Slot>()->controller;
}

std::shared_ptr<TDSecureSceneController> TDSecureSceneController::make() {
    std::shared_ptr<TDSecureSceneController> made(new TDSecureSceneController);
    made->tdSecureFinished = std::make_shared<SceneEvent>(made);
    made->tdSecureWindowClosed = std::make_shared<SceneEvent>(made);
    made->tdSecureWindowTaken = std::make_shared<SceneEvent>(made);
    return made;
}

std::shared_ptr<TDSecureSceneController> TDSecureSceneController::takeUse() {
    if (!shared()) shared() = make();
    ++shared()->mUserCount;
    return shared();
}

void TDSecureSceneController::release(const void* owner) {
    if (mUserCount == 0) return trace(traceTag, [] { return SafeMessage{"released without a user"}; });
    ServiceObject::release(owner);
    detach(owner);
    if (--mUserCount > 0) return;

    const auto last = std::exchange(shared(), nullptr);
    ServiceObject::release(this);
    takePage();  // it may be another facade's, when one gives up more uses than it took
}

void TDSecureSceneController::detach(const void* owner) {
    for (auto* event : {&tdSecureFinished, &tdSecureWindowClosed, &tdSecureWindowTaken}) (*event)->detach(owner);
}

void TDSecureSceneController::loadContent() {
    if (!scene()) return;
    switch (mFlow) {
        case TDSFlowType::CHALLENGE:
            return scene()->load(mUrl, false);
        case TDSFlowType::FINGERPRINT:
            return scene()->load(mUrl, true);
        case TDSFlowType::UNKNOWN:
        case TDSFlowType::FRICTIONLESS:
        case TDSFlowType::ERROR:
            return trace(traceTag, [this] {
                return SafeMessage{"unsupported flow: " + std::to_string(static_cast<int>(mFlow))};
            });
    }
}

void TDSecureSceneController::onViewDidLoad() {
    contained([this] { loadContent(); });
}

void TDSecureSceneController::onRedirect(const std::optional<std::string>& url) {
    if (!url || !url->starts_with(loopbackUrl)) return;
    contained([&] {
        mRedirectedUrl.reset();
        contained([&] { mRedirectedUrl = url; });  // whose page it was hears of its end in any case
        tdSecureFinished->invokeAll();
    });
}

void TDSecureSceneController::onCloseClicked() {
    contained([this] { closeAndTell(*tdSecureWindowClosed); });
}

void TDSecureSceneController::takePage() {
    if (scene()) closeAndTell(*tdSecureWindowTaken);
}

void TDSecureSceneController::closeAndTell(SceneEvent& event) {
    const auto tell = event.prepared();  // without the memory for it, the screen stays, and can be closed again
    close(true);
    tell();
}

}  // namespace kavio
