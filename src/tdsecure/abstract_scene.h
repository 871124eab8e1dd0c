#pragma once

#include <kavio/platform/ui.h>

#include <memory>

namespace kavio {

/// What happens to a scene's view, as its controller hears it.
class ViewLifecycle {
public:
    virtual ~ViewLifecycle() = default;
    virtual void onViewDidLoad() = 0;
    virtual void onViewWillAppear() = 0;
    virtual void onViewDidAppear() = 0;
    virtual void onViewWillDisappear() = 0;
    virtual void onViewDidDisappear() = 0;
    virtual void onDidReceiveMemoryWarning() = 0;
};

/// One screen of the library: the platform draws it, its controller hears what happens to it.
class AbstractScene : public SceneObserver {
public:
    explicit AbstractScene(std::shared_ptr<WebScene> view) : mView(std::move(view)) {}

    std::weak_ptr<ViewLifecycle> lifecycleDelegate;

    void presentOn(ViewController& presenting, bool animated) { presenting.present(mView, animated); }
    void dismiss(bool animated) { mView->dismiss(animated); }

    void onViewEvent(ViewEvent event) override;

private:
    const std::shared_ptr<WebScene> mView;
};

/// The screen that covers all others in the window that the person uses; null when there is none to present on.
std::shared_ptr<ViewController> topMostViewController();

}  // namespace kavio
