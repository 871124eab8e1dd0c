#include "tdsecure/td_secure_scene.h"

#include "network/url_request.h"

namespace kavio {

void TDSecureScene::load(const std::string& content, bool hidden) {
    const auto view = webView.lock();
    if (!view) return;
    view->setHidden(hidden);
    if (hidden) return view->loadHtml(content);
    if (isUrl(content)) view->loadUrl(content, REQUEST_TIMEOUT);
}

bool TDSecureScene::shouldStartLoad(const std::optional<std::string>& url) {
    if (const auto told = delegate.lock()) told->onRedirect(url);
    return true;
}

void TDSecureScene::onButtonClick() {
    if (const auto told = delegate.lock()) told->onCloseClicked();
}

}  // namespace kavio
