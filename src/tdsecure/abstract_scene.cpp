#include "tdsecure/abstract_scene.h"

#include <kavio/platform/platform.h>

namespace kavio {

void AbstractScene::onViewEvent(ViewEvent event) {
    const auto delegate = lifecycleDelegate.lock();
    if (!delegate) return;
    switch (event) {
        case ViewEvent::DID_LOAD:
            return delegate->onViewDidLoad();
        case ViewEvent::WILL_APPEAR:
            return delegate->onViewWillAppear();
        case ViewEvent::DID_APPEAR:
            return delegate->onViewDidAppear();
        case ViewEvent::WILL_DISAPPEAR:
            return delegate->onViewWillDisappear();
        case ViewEvent::DID_DISAPPEAR:
            return delegate->onViewDidDisappear();
        case ViewEvent::DID_RECEIVE_MEMORY_WARNING:
            return delegate->onDidReceiveMemoryWarning();
    }
}

std::shared_ptr<ViewController> topMostViewController() {
    const auto windows = Platform::current().windows;
    const auto window = windows ? windows->keyWindow() : nullptr;
    auto topMost = window ? window->rootViewController() : nullptr;
    while (topMost) {
        auto presented = topMost->presentedViewController();
        if (!presented) break;
        topMost = std::move(presented);
    }
    return topMost;
}

}  // namespace kavio
