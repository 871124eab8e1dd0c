#include "network/url_request.h"

#include <kavio/platform/ui.h>

namespace kavio {

void TDSecureScene::load(const std::string& content, bool hidden) const {
    const auto view = webView();
    if (!view) return;
    view->setHidden(hidden);
    if (hidden) return view->loadHtml(content);
    if (isUrl(content)) view->loadUrl(content, REQUEST_TIMEOUT);
}

}  // namespace kavio
