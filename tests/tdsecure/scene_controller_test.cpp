#include "support/fakes/fake_device.h"
#include "support/fakes/fake_windows.h"
#include "tdsecure/td_secure_scene_controller.h"
#include "util/shared_instance.h"

#include <gtest/gtest.h>

#include <vector>

namespace kavio::test {
namespace {

/// One who uses the shared controller, as a facade does, and counts the ends of pages that reach them.
class User {
public:
    explicit User(int& ends) {
        controller->tdSecureFinished->attach(std::make_shared<TDSecureSceneController::SceneEvent::Observer>(
            mSelf, [&ends](TDSecureSceneController&) { ++ends; }));
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

    void present(const User& user) {
        const auto scene = user.controller->createScene("libKavio");
        scene->delegate = user.controller;
        scene->presentOn(*topMostViewController(), true);
    }

    FakeDevice device;
    InstalledPlatform installed{device.platform()};
    std::shared_ptr<FakeWindows> windows = std::make_shared<FakeWindows>();
    int ends = 0;
};

TEST_F(SceneControllerTest, HasNoSceneWhereNoneCanBeMade) {
    const User user(ends);
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
    const User user(ends);
    present(user);
    for (const auto& [url, isEnd] : std::vector<std::pair<std::optional<std::string>, bool>>{
             {"http://127.0.0.1", true},
             {"http://127.0.0.1/?z2=0", true},
             {"http://127.0.0.10/", true},
             {"https://127.0.0.1/?z2=0", false},
             {"HTTP://127.0.0.1/", false},
             {" http://127.0.0.1/", false},
             {std::nullopt, false},
         }) {
        ends = 0;
        user.controller->mRedirectedUrl = "none";
        EXPECT_TRUE(windows->navigate(url));
        EXPECT_EQ(ends, isEnd ? 1 : 0) << url.value_or("none");
        EXPECT_EQ(user.controller->mRedirectedUrl, isEnd ? url : "none");
    }
}

TEST_F(SceneControllerTest, IsSharedUntilItsLastUserReleasesIt) {
    auto first = std::make_unique<User>(ends);
    User second(ends);
    EXPECT_EQ(first->controller, second.controller);
    present(second);
    windows->navigate("http://127.0.0.1/");
    EXPECT_EQ(ends, 2);

    first.reset();
    windows->navigate("http://127.0.0.1/");
    EXPECT_EQ(ends, 3);

    second.release();
    EXPECT_TRUE(second.controller->isReleased());
    EXPECT_FALSE(windows->hasScene());
    EXPECT_EQ(second.controller->tdSecureFinished->count(), 0U);
    const User third(ends);
    EXPECT_NE(third.controller, second.controller);
    second.release();  // one too many does not touch the others' controller
    EXPECT_EQ(TDSecureSceneController::takeUse(), third.controller);
    third.controller->release(nullptr);
}

}  // namespace
}  // namespace kavio::test
