#include "platform/linux/url_session.h"

#include "platform/linux/url_session_engine.h"

#include <utility>

namespace kavio {
namespace {

class CurlUrlSession : public UrlSession {
public:
    explicit CurlUrlSession(const UrlSessionConfiguration& configuration) : mEngine(UrlConduct(configuration, false)) {}

    void dataTask(UrlRequest request, Completion completion) override {
        mEngine.submit(std::move(request), std::move(completion));
    }

private:
    UrlEngine mEngine;
};

}  // namespace

std::shared_ptr<UrlSession> makeUrlSession(const UrlSessionConfiguration& configuration) {
    return std::make_shared<CurlUrlSession>(configuration);
}

}  // namespace kavio
