#include "support/fakes/fake_device.h"
#include "support/fakes/fake_windows.h"
#include "tdsecure/td_secure_scene_controller.h"
#include "util/shared_instance.h"

#include <gmock/gmock.h>

#include <algorithm>
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

    bool present(const User& user) {
        const auto topMost = topMostViewController();
        user.controller->mFlow = TDSFlowType::CHALLENGE;
        user.controller->mUrl = "https://acs.example/c";
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

TEST_F(SceneControllerTest, HasNoSceneWhereNoneCanBeMade) {
    const User user(calls);
    EXPECT_FALSE(user.controller->createScene("another"));
    Platform::current().windows = nullptr;
    EXPECT_FALSE(user.controller->createScene(storyboard));
    EXPECT_FALSE(topMostViewController());
    user.controller->loadContent();
    Platform::current().windows = windows;
    for (bool* const part : {&windows->hasStoryboard, &windows->hasRootViewController, &windows->hasKeyWindow}) {
        *part = false;
        EXPECT_FALSE(present(user));
        *part = true;
    }
    EXPECT_TRUE(present(user));
}

TEST_F(SceneControllerTest, EndsAPageAtTheLoopbackAddressAndHoldsNoNavigationUp) {
    const User user(calls);
    ASSERT_TRUE(present(user));
    const std::vector<std::optional<std::string>> ends{"http://127.0.0.1", "http://127.0.0.1/?z2=0",
                                                       "http://127.0.0.10/", "http://127.0.0.1.example/"};
    std::vector<std::optional<std::string>> urls{"https://127.0.0.1/?z2=0",
                                                 "HTTP://127.0.0.1/",
                                                 "http://localhost/",
                                                 " http://127.0.0.1/",
                                                 "about:blank",
                                                 "",
                                                 std::nullopt};
    urls.insert(urls.end(), ends.begin(), ends.end());
    for (const auto& url : urls) {
        const bool isEnd = std::find(ends.begin(), ends.end(), url) != ends.end();
        calls.clear();
        user.controller->mRedirectedUrl = "none";
        EXPECT_TRUE(windows->navigate(url));
        EXPECT_EQ(calls, isEnd ? std::vector<std::string>{"finished"} : std::vector<std::string>{})
            << url.value_or("none");
        EXPECT_EQ(user.controller->mRedirectedUrl, isEnd ? url : "none");
    }
    EXPECT_TRUE(windows->hasScene());
    calls.clear();
    user.controller->scene()->delegate.reset();
    EXPECT_TRUE(windows->navigate("http://127.0.0.1/"));
    windows->pressClose();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SceneControllerTest, FollowsTheLifeOfTheView) {
    const User user(calls);
    ASSERT_TRUE(present(user));
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
    ASSERT_TRUE(present(second));
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
            windows, [&](TDSecureSceneController& sender) {
                EXPECT_EQ(sender.scene() == nullptr, byClose) << "a close is told once the scene is gone";
                user.reset();
            });
        user->controller->tdSecureFinished->attach(dropped);
        user->controller->tdSecureWindowClosed->attach(dropped);
        ASSERT_TRUE(present(*user));
        byClose ? windows->pressClose() : static_cast<void>(windows->navigate("http://127.0.0.1/"));
        EXPECT_FALSE(user || windows->hasScene());
    }
}

}  // namespace
}  // namespace kavio::test
