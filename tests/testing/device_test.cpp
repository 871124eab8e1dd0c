#include <kavio/testing/device.h>
#include <kavio/testing/recording_delegate.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

/// What the network of a device in a box does with one request, step by step.
struct Asking {
    std::shared_ptr<DownloadTask> ask(Network::Session session, std::chrono::seconds timeout = 60s) {
        UrlRequest request{.url = "https://api.kavio.example/v1/time", .timeout = timeout};
        request.willWait = [this] { log.emplace_back("waits"); };
        const auto completion = [this](const std::variant<UrlReply, UrlError>& outcome) {
            const auto* error = std::get_if<UrlError>(&outcome);
            log.push_back(error ? std::to_string(error->code) + (error->mayHaveBeenSent ? " sent" : "") : "reply");
        };
        if (session == Network::Session::BACKGROUND)
            return device.platform().backgroundUrlSession->downloadTask(request, completion);
        device.platform().urlSession->dataTask(request, completion);
        return nullptr;
    }

    Device device;
    std::vector<std::string> log;
};

TEST(BoxedNetwork, LosesWhatIsUnderWayWhenItIsCut) {
    struct Case {
        Network::Session session;
        std::chrono::milliseconds cutAfter;
        std::vector<std::string> log;
    };
    const Fate slow{.connecting = 10ms, .there = 10ms, .back = 10ms};
    for (const auto& [session, cutAfter, log] : std::vector<Case>{
             {Network::Session::ORDINARY, 0ms, {"-1009"}},
             {Network::Session::ORDINARY, 5ms, {"-1009"}},
             {Network::Session::ORDINARY, 15ms, {"-1005 sent"}},
             {Network::Session::ORDINARY, 25ms, {"-1005 sent"}},
             {Network::Session::ORDINARY, 35ms, {"reply"}},
             {Network::Session::BACKGROUND, 0ms, {"waits", "reply"}},
             {Network::Session::BACKGROUND, 5ms, {"waits", "reply"}},
             {Network::Session::BACKGROUND, 15ms, {"-1005 sent"}},
         }) {
        SCOPED_TRACE(cutAfter.count());
        Asking asking;
        asking.device.network().usually([&](const auto&) { return slow; });
        asking.ask(session);
        if (cutAfter > 0ms) asking.device.letPass(cutAfter);
        asking.device.network().cut();
        asking.device.letPass(1h);
        asking.device.network().restore();
        asking.device.letPass(1s);
        EXPECT_EQ(asking.log, log);
    }
}

TEST(BoxedNetwork, GivesUpOnlyWhatHasNotLeft) {
    for (const auto after : {0ms, 5ms, 15ms}) {
        Asking asking;
        asking.device.network().next({.connecting = 10ms, .there = 10ms});
        const auto task = asking.ask(Network::Session::BACKGROUND);
        if (after > 0ms) asking.device.letPass(after);
        const bool isGivenUp = task->cancel();
        EXPECT_EQ(isGivenUp, after < 10ms);
        EXPECT_EQ(task->cancel(), isGivenUp);
        EXPECT_THAT(asking.log, IsEmpty()) << "never inside the call";
        asking.device.letPass(1s);
        EXPECT_THAT(asking.log, ElementsAre(isGivenUp ? "-999" : "reply"));
        EXPECT_THAT(asking.device.service().requests(), testing::SizeIs(isGivenUp ? 0 : 1));
    }
}

TEST(BoxedNetwork, WaitsNoLongerThanARequestMay) {
    Asking asking;
    asking.device.service().add({.path = "/time", .delay = 3s, .takesEffect = true});
    asking.ask(Network::Session::ORDINARY, 2s);
    asking.device.letPass(1999ms);
    EXPECT_THAT(asking.log, IsEmpty());
    asking.device.letPass(1ms);
    EXPECT_THAT(asking.log, ElementsAre("-1001 sent"));
}

TEST(BoxedDevice, DoesTheSameAgainWithTheSameSeed) {
    const auto sent = [](std::uint64_t seed) {
        Device device({.seed = seed});
        EXPECT_TRUE(device.logIn());
        std::string all;
        for (const auto& request : device.network().requests())
            for (const auto& [name, value] : request.headers) all += name + value;
        return all + device.platform().uuid->make();
    };
    EXPECT_EQ(sent(1), sent(1));
    EXPECT_NE(sent(1), sent(2));
}

TEST(BoxedDevice, MayHaveRealThreadsBehindItsQueues) {
    const Device device({.hasThreads = true});
    std::thread::id thread;
    std::atomic<bool> isDone = false;
    device.platform().serialQueue->async([&] { thread = std::this_thread::get_id(), isDone = true; });
    while (!isDone) std::this_thread::yield();
    EXPECT_NE(thread, std::this_thread::get_id());
}

}  // namespace
}  // namespace kavio::test
