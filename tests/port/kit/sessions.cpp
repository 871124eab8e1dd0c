// Sessions of a port, each with one fault. They are made of good ones.
#include <kavio/platform/linux.h>
#include <kavio/testing/conformance/background_url_session.h>
#include <kavio/testing/conformance/url_session.h>

namespace kavio::test {
namespace {

Platform reachingFor(const Reach& reach) {
    return makeLinuxPlatform({.session = {reach.authorities, reach.address}, .storeDirectory = "/nonexistent"});
}

bool isLost(const Outcome& outcome) { return errorCode(outcome) == UrlError::networkConnectionLost; }

/// What a faulty session makes of a request.
using Fault = std::function<void(UrlSession&, const UrlRequest&, const UrlSession::Completion&)>;

class FaultySession final : public UrlSession {
public:
    FaultySession(const Reach& reach, Fault fault) : mGood(reachingFor(reach).urlSession), mFault(std::move(fault)) {}
    void dataTask(UrlRequest request, Completion completion) override { mFault(*mGood, request, completion); }

private:
    const std::shared_ptr<UrlSession> mGood;
    const Fault mFault;
};

SessionPort sessionWith(Fault fault) {
    return {
        .name = "Session",
        .factory = {.session = [fault](const Reach& reach) { return std::make_shared<FaultySession>(reach, fault); }},
    };
}

void sendAgain(UrlSession& good, const UrlRequest& request, const UrlSession::Completion& completion) {
    good.dataTask(request, [&good, request, completion](const Outcome& outcome) {
        isLost(outcome) ? good.dataTask(request, completion) : completion(outcome);
    });
}

void refuseInsideTheCall(UrlSession& good, const UrlRequest& request, const UrlSession::Completion& completion) {
    if (request.url.starts_with("https://")) return good.dataTask(request, completion);
    completion(UrlError{UrlError::badUrl, "The URL is not secure.", std::nullopt, false});
}

void completeTwice(UrlSession& good, const UrlRequest& request, const UrlSession::Completion& completion) {
    good.dataTask(request, [completion](const Outcome& outcome) {
        completion(outcome);
        completion(outcome);
    });
}

void denyThatItWasSent(UrlSession& good, const UrlRequest& request, const UrlSession::Completion& completion) {
    good.dataTask(request, [completion](Outcome outcome) {
        if (isLost(outcome)) std::get<UrlError>(outcome).mayHaveBeenSent = false;
        completion(outcome);
    });
}

/// Says that everything can be given up.
class FaultyTask final : public DownloadTask {
public:
    explicit FaultyTask(std::shared_ptr<DownloadTask> good) : mGood(std::move(good)) {}
    bool cancel() override { return mGood->cancel(), true; }

private:
    const std::shared_ptr<DownloadTask> mGood;
};

class FaultyBackgroundSession final : public BackgroundUrlSession {
public:
    explicit FaultyBackgroundSession(const Reach& reach) : mGood(reachingFor(reach).backgroundUrlSession) {}
    std::shared_ptr<DownloadTask> downloadTask(UrlRequest request, Completion completion) override {
        return std::make_shared<FaultyTask>(mGood->downloadTask(std::move(request), std::move(completion)));
    }
    void onEventsDelivered(std::function<void()> handler) override { mGood->onEventsDelivered(std::move(handler)); }

private:
    const std::shared_ptr<BackgroundUrlSession> mGood;
};

const SessionPort backgroundSession{
    .name = "BackgroundSession",
    .factory = {.backgroundSession =
                    [](const Reach& reach) { return std::make_shared<FaultyBackgroundSession>(reach); }},
};

INSTANTIATE_TEST_SUITE_P(SendsAgain, SessionConformance, testing::Values(sessionWith(sendAgain)));
INSTANTIATE_TEST_SUITE_P(RefusesInside, SessionConformance, testing::Values(sessionWith(refuseInsideTheCall)));
INSTANTIATE_TEST_SUITE_P(CompletesTwice, SessionConformance, testing::Values(sessionWith(completeTwice)));
INSTANTIATE_TEST_SUITE_P(DeniesSending, SessionConformance, testing::Values(sessionWith(denyThatItWasSent)));
INSTANTIATE_TEST_SUITE_P(GivesUpAll, BackgroundSessionConformance, testing::Values(backgroundSession));

}  // namespace
}  // namespace kavio::test
