#pragma once

#include "util/service_object.h"

#include <kavio/platform/platform.h>

#include <memory>
#include <utility>

namespace kavio {

/// Owns a scene of type `Scene` while there is one, and is told what happens to its view.
template <class Scene>
class AbstractSceneController : public ServiceObject,
                                public ViewLifecycle,
                                public std::enable_shared_from_this<AbstractSceneController<Scene>> {
public:
    /// The scene. If there is none, it is `prepared` or, where that is null, made. Null if it cannot be made.
    std::shared_ptr<Scene> createScene(std::shared_ptr<Scene> prepared = nullptr) {
        if (mScene) return mScene;
        const auto windows = Platform::current().windows;
        mScene = prepared || !windows ? std::move(prepared) : windows->makeScene();
        if (mScene) mScene->lifecycleDelegate = this->weak_from_this();
        return mScene;
    }

    /// Does nothing without a scene.
    void close(bool animated) {
        if (const auto closing = std::exchange(mScene, nullptr)) closing->dismiss(animated);
    }

    const std::shared_ptr<Scene>& scene() const { return mScene; }
    bool isVisible() const { return mIsVisible; }

    void onViewDidLoad() override {}
    void onViewWillAppear() override { mIsVisible = true; }
    void onViewDidAppear() override {}
    void onViewWillDisappear() override { mIsVisible = false; }
    void onViewDidDisappear() override {}
    void onDidReceiveMemoryWarning() override {}

private:
    std::shared_ptr<Scene> mScene;
    bool mIsVisible = false;
};

}  // namespace kavio
