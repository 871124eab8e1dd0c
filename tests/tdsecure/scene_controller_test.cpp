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

constexpr const char* address = "https://acs.example/c?a=1";

/// One who uses the shared controller, as a facade does, and logs the events that reach them.
class User {
public:
    explicit User(std::vector<std::string>& calls) {
        const auto logged = [&calls, this](const std::string& event) {
            return std::make_shared<TDSecureSceneController::SceneEvent::Observer>(
                mSelf, [&calls, event](TDSecureSceneController& sender) {
                    calls.push_back(event + (sender.scene() ? "" : " without a scene"));
                });
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

    void present(const User& user, TDSFlowType flow = TDSFlowType::CHALLENGE) {
        user.controller->mFlow = flow;
        user.controller->mUrl = address;
        const auto scene = user.controller->createScene("libKavio");
        scene->delegate = user.controller;
        scene->presentOn(*topMostViewController(), true);
    }

    FakeDevice device;
    InstalledPlatform installed{device.platform()};
    std::shared_ptr<FakeWindows> windows = std::make_shared<FakeWindows>();
    std::vector<std::string> calls;
};

TEST_F(SceneControllerTest, LoadsItsContentOncePerPresentation) {
    const auto load = std::string("load ") + address + " 60";
    for (const auto flow : {TDSFlowType::CHALLENGE, TDSFlowType::FRICTIONLESS, TDSFlowType::UNKNOWN}) {
        const User user(calls);
        windows->log.clear();
        present(user, flow);
        present(user, flow);  // of a scene that is up: nothing new happens
        user.controller->close(false);
        user.controller->close(true);
        if (flow == TDSFlowType::CHALLENGE) {
            EXPECT_THAT(windows->log, ElementsAre("present animated", "shown", load, "dismiss"));
        } else {
            EXPECT_THAT(windows->log, ElementsAre("present animated", "dismiss"));
        }
    }
}

TEST_F(SceneControllerTest, HasNoSceneWhereNoneCanBeMade) {
    const User user(calls);
    EXPECT_FALSE(user.controller->createScene("another"));
    windows->hasStoryboard = false;
    EXPECT_FALSE(user.controller->createScene("libKavio"));
    windows->hasRootViewController = false;
    EXPECT_FALSE(topMostViewController());
    Platform::current().windows = nullptr;
    EXPECT_FALSE(topMostViewController());
    EXPECT_FALSE(user.controller->createScene("libKavio"));
    user.controller->loadContent();
}

TEST_F(SceneControllerTest, EndsAPageAtTheLoopbackAddressAndHoldsNoNavigationUp) {
    const User user(calls);
    present(user);
    for (const auto& [url, isEnd] : std::vector<std::pair<std::optional<std::string>, bool>>{
             {"http://127.0.0.1", true},
             {"http://127.0.0.1/?z2=0", true},
             {"http://127.0.0.10/", true},
             {"https://127.0.0.1/?z2=0", false},
             {"HTTP://127.0.0.1/", false},
             {"http://localhost/", false},
             {" http://127.0.0.1/", false},
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
}

TEST_F(SceneControllerTest, DismissesTheSceneBeforeItTellsThatThePersonClosedIt) {
    const User user(calls);
    present(user);
    const auto first = user.controller->scene();
    windows->navigate("http://127.0.0.1/?z2=0");
    windows->pressClose();
    EXPECT_THAT(calls, ElementsAre("finished", "closed without a scene"));
    EXPECT_EQ(windows->log.back(), "dismiss animated");
    EXPECT_EQ(user.controller->mRedirectedUrl, "http://127.0.0.1/?z2=0");

    present(user);
    EXPECT_NE(user.controller->scene(), first);
}

TEST_F(SceneControllerTest, FollowsTheLifeOfTheView) {
    const User user(calls);
    present(user);
    windows->log.clear();
    for (const auto& [event, isVisible] :
         std::vector<std::pair<ViewEvent, bool>>{{ViewEvent::WILL_DISAPPEAR, false},
                                                 {ViewEvent::DID_DISAPPEAR, false},
                                                 {ViewEvent::WILL_APPEAR, true},
                                                 {ViewEvent::DID_APPEAR, true},
                                                 {ViewEvent::DID_RECEIVE_MEMORY_WARNING, true}}) {
        windows->tell(event);
        EXPECT_EQ(user.controller->isVisible(), isVisible);
    }
    EXPECT_THAT(windows->log, IsEmpty());
}

TEST_F(SceneControllerTest, IsSharedUntilItsLastUserReleasesIt) {
    auto first = std::make_unique<User>(calls);
    User second(calls);
    EXPECT_EQ(first->controller, second.controller);
    present(second);
    windows->navigate("http://127.0.0.1/");
    EXPECT_THAT(calls, ElementsAre("finished", "finished"));

    first.reset();
    calls.clear();
    windows->navigate("http://127.0.0.1/");
    EXPECT_THAT(calls, ElementsAre("finished"));

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

}  // namespace
}  // namespace kavio::test
