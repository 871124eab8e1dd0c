#pragma once

#include "tdsecure/abstract_scene.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

class TDSecureSceneDelegate {
public:
    virtual ~TDSecureSceneDelegate() = default;
    /// A navigation to `url` is about to start; absent when the web view knows no URL.
    virtual void onRedirect(const std::optional<std::string>& url) = 0;
    virtual void onCloseClicked() = 0;
};

/// The screen that runs the card issuer's pages.
class TDSecureScene final : public AbstractScene {
public:
    /// Its name in the storyboard.
    static constexpr std::string_view identifier = "TDSecureScene";

    explicit TDSecureScene(const std::shared_ptr<WebScene>& view) : AbstractScene(view), webView(view->webView()) {}

    const std::weak_ptr<WebView> webView;
    std::weak_ptr<TDSecureSceneDelegate> delegate;

    /// Hidden: `content` is an HTML document. Visible: it is a page's address; what is no URL loads nothing.
    void load(const std::string& content, bool hidden);

    /// Always true: a page ends by a navigation, and none is held up.
    bool shouldStartLoad(const std::optional<std::string>& url) override;
    void onButtonClick() override;
};

}  // namespace kavio
