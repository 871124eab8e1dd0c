#include "support/fakes/fake_device.h"
#include "support/fakes/fake_windows.h"
#include "tdsecure/td_secure_scene_controller.h"
#include "util/shared_instance.h"

#include <gmock/gmock.h>

#include <vector>

namespace kavio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* storyboard = "libKavio";

/// One who uses the shared controller, as a facade does, and logs the events that reach them.
class User {
public:
    explicit User(std::vector<std::string>& calls) {
        const auto logged = [&calls, this](const std::string& event) {
            return std::make_shared<TDSecureSceneController::SceneEvent::Observer>(
                mSelf, [&calls, event](TDSecureSceneController&) { calls.push_back(event); });
        };
        controller->tdSecureFinished->attach(logged("finished"));
        controller->tdSecureWindowClosed->attach(logged("closed"));
    }
    ~User() { release(); }
    void release() { controller->release(mSelf.get()); }

    const std::shared_ptr<TDSecureSceneController> controller = TDSecureSceneController::takeUse();

private:
    const std::shared_ptr<int> mSelf = std::make_shared<int>(0);
};

class SceneControllerTest : public testing::Test {
protected:
    SceneControllerTest() {
        forgetSharedInstances();
        Platform::current().windows = windows;
    }

    bool present(const User& user, TDSFlowType flow, const std::string& content) {
        const auto topMost = topMostViewController();
        user.controller->mFlow = flow;
        user.controller->mUrl = content;
        const auto scene = user.controller->createScene(storyboard);
        if (!topMost || !scene) return false;
        scene->delegate = user.controller;
        scene->presentOn(*topMost, true);
        return true;
    }

    FakeDevice device;
    InstalledPlatform installed{device.platform()};
    std::shared_ptr<FakeWindows> windows = std::make_shared<FakeWindows>();
    std::vector<std::string> calls;
};

TEST_F(SceneControllerTest, LoadsItsContentOncePerPresentationAsTheFlowSays) {
    struct Case {
        TDSFlowType flow;
        std::string content;
        std::vector<std::string> expected;
    };
    for (const auto& [flow, content, expected] : std::vector<Case>{
             {TDSFlowType::CHALLENGE, "https://acs.example/c?a=1", {"shown", "load https://acs.example/c?a=1 60"}},
             {TDSFlowType::CHALLENGE, "no URL", {"shown"}},
             {TDSFlowType::FINGERPRINT, "<html>", {"hidden", "html <html>"}},
             {TDSFlowType::FRICTIONLESS, "https://acs.example/c", {}},
             {TDSFlowType::UNKNOWN, "https://acs.example/c", {}},
         }) {
        const User user(calls);
        windows->log.clear();
        EXPECT_TRUE(present(user, flow, content));
        EXPECT_TRUE(user.controller->isVisible());
        EXPECT_TRUE(present(user, flow, content)) << "of a scene that is up: nothing new happens";
        user.controller->close(false);
        EXPECT_FALSE(user.controller->isVisible());
        user.controller->close(true);

        auto all = expected;
        all.insert(all.begin(), "present animated");
        all.emplace_back("dismiss");
        EXPECT_EQ(windows->log, all) << content;
    }
}

TEST_F(SceneControllerTest, HasNoSceneWhereNoneCanBeMade) {
    const User user(calls);
    windows->hasStoryboard = false;
    EXPECT_FALSE(user.controller->createScene(storyboard));
    windows->hasStoryboard = true;
    EXPECT_FALSE(user.controller->createScene("another"));
    EXPECT_TRUE(topMostViewController());
    windows->hasRootViewController = false;
    EXPECT_FALSE(topMostViewController());
    windows->hasKeyWindow = false;
    EXPECT_FALSE(topMostViewController());
    Platform::current().windows = nullptr;
    EXPECT_FALSE(topMostViewController());
    EXPECT_FALSE(user.controller->createScene(storyboard));
    user.controller->loadContent();
}

TEST_F(SceneControllerTest, EndsAPageAtTheLoopbackAddressAndHoldsNoNavigationUp) {
    const User user(calls);
    ASSERT_TRUE(present(user, TDSFlowType::CHALLENGE, "https://acs.example/c"));
    for (const auto& [url, isEnd] : std::vector<std::pair<std::optional<std::string>, bool>>{
             {"http://127.0.0.1", true},
             {"http://127.0.0.1/?z2=0", true},
             {"http://127.0.0.10/", true},
             {"http://127.0.0.1.example/", true},
             {"https://127.0.0.1/?z2=0", false},
             {"HTTP://127.0.0.1/", false},
             {"http://localhost/", false},
             {" http://127.0.0.1/", false},
             {"about:blank", false},
             {"", false},
             {std::nullopt, false},
         }) {
        calls.clear();
        user.controller->mRedirectedUrl = "none";
        EXPECT_TRUE(windows->navigate(url));
        EXPECT_EQ(calls, isEnd ? std::vector<std::string>{"finished"} : std::vector<std::string>{})
            << url.value_or("none");
        EXPECT_EQ(user.controller->mRedirectedUrl, isEnd ? url : "none");
    }
    EXPECT_TRUE(windows->hasScene());
    user.controller->scene()->delegate.reset();
    EXPECT_TRUE(windows->navigate("http://127.0.0.1/"));
    windows->pressClose();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SceneControllerTest, DismissesTheSceneBeforeItTellsThatThePersonClosedIt) {
    const User user(calls);
    user.controller->tdSecureWindowClosed->attachOnce(
        std::make_shared<TDSecureSceneController::SceneEvent::Observer>(windows, [&](TDSecureSceneController& sender) {
            EXPECT_FALSE(windows->hasScene());
            EXPECT_FALSE(sender.scene());
        }));
    ASSERT_TRUE(present(user, TDSFlowType::CHALLENGE, "https://acs.example/c"));
    const auto first = user.controller->scene();
    windows->navigate("http://127.0.0.1/?z2=0");
    windows->pressClose();
    EXPECT_THAT(calls, ElementsAre("finished", "closed"));
    EXPECT_EQ(windows->log.back(), "dismiss animated");
    EXPECT_EQ(user.controller->mRedirectedUrl, "http://127.0.0.1/?z2=0");

    ASSERT_TRUE(present(user, TDSFlowType::CHALLENGE, "https://acs.example/c"));
    EXPECT_NE(user.controller->scene(), first);
}

TEST_F(SceneControllerTest, FollowsTheLifeOfTheView) {
    const User user(calls);
    ASSERT_TRUE(present(user, TDSFlowType::CHALLENGE, "https://acs.example/c"));
    windows->log.clear();
    for (const auto& [event, isVisible] : std::vector<std::pair<ViewEvent, bool>>{
             {ViewEvent::WILL_DISAPPEAR, false},
             {ViewEvent::DID_DISAPPEAR, false},
             {ViewEvent::WILL_APPEAR, true},
             {ViewEvent::DID_APPEAR, true},
             {ViewEvent::DID_RECEIVE_MEMORY_WARNING, true},
         }) {
        windows->tell(event);
        EXPECT_EQ(user.controller->isVisible(), isVisible);
    }
    EXPECT_THAT(windows->log, IsEmpty());
    windows->tell(ViewEvent::DID_LOAD);
    EXPECT_THAT(windows->log, ElementsAre("shown", "load https://acs.example/c 60"));
}

TEST_F(SceneControllerTest, IsSharedUntilItsLastUserReleasesIt) {
    auto first = std::make_unique<User>(calls);
    User second(calls);
    EXPECT_EQ(first->controller, second.controller);
    ASSERT_TRUE(present(second, TDSFlowType::CHALLENGE, "https://acs.example/c"));
    windows->navigate("http://127.0.0.1/");
    EXPECT_THAT(calls, ElementsAre("finished", "finished"));

    first.reset();
    calls.clear();
    EXPECT_TRUE(windows->navigate("http://127.0.0.1/"));
    EXPECT_THAT(calls, ElementsAre("finished"));
    EXPECT_FALSE(second.controller->isReleased());

    second.release();
    EXPECT_TRUE(second.controller->isReleased());
    EXPECT_FALSE(windows->hasScene());
    EXPECT_EQ(second.controller->tdSecureFinished->count(), 0U);
    const User third(calls);
    EXPECT_NE(third.controller, second.controller);
    second.release();  // one too many does not touch the others' controller
    EXPECT_EQ(TDSecureSceneController::takeUse(), third.controller);
    third.controller->release(nullptr);
}

TEST_F(SceneControllerTest, MayLoseItsLastUserInsideAnEvent) {
    for (const bool byClose : {false, true}) {
        auto user = std::make_unique<User>(calls);
        const auto dropped = std::make_shared<TDSecureSceneController::SceneEvent::Observer>(
            windows, [&](TDSecureSceneController&) { user.reset(); });
        user->controller->tdSecureFinished->attach(dropped);
        user->controller->tdSecureWindowClosed->attach(dropped);
        ASSERT_TRUE(present(*user, TDSFlowType::CHALLENGE, "https://acs.example/c"));
        byClose ? windows->pressClose() : static_cast<void>(windows->navigate("http://127.0.0.1/"));
        EXPECT_FALSE(user);
        EXPECT_FALSE(windows->hasScene());
    }
}

}  // namespace
}  // namespace kavio::test
