#include "gtk/gtk_world.h"
#include "support/raw_server.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

namespace kavio::test {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// What a scene told its controller.
struct SceneLog final : ViewLifecycle, TDSecureSceneDelegate {
    void onViewDidLoad() override { events.emplace_back("did load"); }
    void onViewWillAppear() override { events.emplace_back("will appear"); }
    void onViewDidAppear() override { events.emplace_back("did appear"); }
    void onViewWillDisappear() override { events.emplace_back("will disappear"); }
    void onViewDidDisappear() override { events.emplace_back("did disappear"); }
    void onDidReceiveMemoryWarning() override {}
    void onRedirect(const std::optional<std::string>& url) override {
        urls.push_back(url.value_or("none"));
        if (urls.back().starts_with("http://127.0.0.1")) loopbacks.push_back(urls.back());
        if (onLoad) onLoad(urls.back());
    }
    void onCloseClicked() override {
        ++closes;
        if (onClose) onClose();
    }
    std::vector<std::string> events;
    std::vector<std::string> urls;
    std::vector<std::string> loopbacks;  // those that are addresses of this device
    int closes = 0;
    std::function<void(const std::string&)> onLoad;
    std::function<void()> onClose;
};

/// With a scene above the window.
class SceneTest : public GtkHost {
protected:
    SceneTest()
        : GtkHost([] {
              static const TemporaryFolder folder;
              const auto file = folder.path() / "authority.pem";
              std::ofstream(file) << authority().pem();
              return UrlSessionConfiguration{file, ""};
          }()) {
        renew();
    }
    ~SceneTest() override { scene->dismiss(false); }

    void present() { Platform::current().windows->keyWindow()->rootViewController()->present(scene, true); }
    void showPage(const std::string& html) {
        server.servePage("/page", html);
        scene->webView()->setHidden(false);
        scene->webView()->loadUrl(server.url("/page"), std::chrono::seconds(60));
        present();
    }
    void runHidden(const std::string& html) {
        scene->webView()->setHidden(true);
        scene->webView()->loadHtml(html);
        present();
    }
    /// Continues with a new scene.
    void renew() {
        if (scene) scene->dismiss(false);
        log = std::make_shared<SceneLog>();
        scene = Platform::current().windows->makeScene();
        scene->lifecycleDelegate = log;
        scene->delegate = log;
    }

    /// By then, everything that the page before it began has been offered.
    void openAnotherPage() {
        server.servePage("/another", "another");
        scene->webView()->loadUrl(server.url("/another"), std::chrono::seconds(60));
        EXPECT_TRUE(until([&] { return std::count(log->urls.begin(), log->urls.end(), server.url("/another")) > 0; }));
    }

    /// One that the host trusts.
    static const sandbox::Authority& authority() {
        static const sandbox::Authority authority;
        return authority;
    }

    std::shared_ptr<TDSecureScene> scene;
    std::shared_ptr<SceneLog> log = std::make_shared<SceneLog>();
};

TEST_F(SceneTest, OffersEachWayToTheEndOfAPageOnce) {
    const std::string end = "http://127.0.0.1/?g1=a%20b&g1=&z2=%C3%A9+&z50=";
    const std::string form =
        "method=post action='" + end + "'><input name=x></form><script>document.forms[0].submit()</script>";
    server.serveRedirect("/end", end);
    server.serveRedirect("/chain", server.url("/end"));
    server.servePage("/form", "<form " + form);
    present();
    struct Case {
        const char* name;
        std::string html;
        bool isShown = false;  // only for a few: a shown page costs a new web process
    };
    for (const auto& [name, html, isShown] : std::initializer_list<Case>{
             {"a script", "<script>location='" + end + "'</script>"},
             {"a refresh", "<meta http-equiv=refresh content=\"0;url=" + end + "\">"},
             {"a redirect", "<script>location='" + server.url("/end") + "'</script>"},
             {"a chain of redirects", "<script>location='" + server.url("/chain") + "'</script>"},
             {"a form", "<form " + form},
             {"a frame", "<iframe src='" + end + "'></iframe>"},
             {"a form in a frame", "<iframe src='" + server.url("/form") + "'></iframe>"},
             {"a form into a frame", "<iframe name=f></iframe><form target=f " + form},
             {"a redirect in a frame", "<iframe src='" + server.url("/chain") + "'></iframe>"},
             {"a script, shown", "<script>location='" + end + "'</script>", true},
             {"a redirect, shown", "<script>location='" + server.url("/chain") + "'</script>", true},
             {"a form in a frame, shown", "<iframe src='" + server.url("/form") + "'></iframe>", true},
         }) {
        SCOPED_TRACE(name);
        log->urls.clear();
        log->loopbacks.clear();
        isShown ? showPage(html) : runHidden(html);
        EXPECT_TRUE(until([&] { return !log->loopbacks.empty(); })) << testing::PrintToString(log->urls);
        EXPECT_NE(shown(), "failed");
        openAnotherPage();
        EXPECT_THAT(log->loopbacks, ElementsAre(end));
    }
}

TEST_F(SceneTest, OpensANewWindowOfThePersonsInItself) {
    // A click anywhere will do.
    for (const auto* way :
         {"<a target=_blank href='http://127.0.0.1/?z2=0' style='position:fixed;inset:0'>x</a>",
          "<form target=_blank method=post action='http://127.0.0.1/?z2=0'><button style='position:fixed;inset:0'>x",
          "<button onclick=\"window.open('http://127.0.0.1/?z2=0')\" style='position:fixed;inset:0'>x</button>"}) {
        SCOPED_TRACE(way);
        int tries = 10;
        renew();  // one of the clicks below may come late and would end the next page
        showPage(way);
        ASSERT_TRUE(until([&] { return shown() == "page"; }));
        const auto isOver = [&] { return !log->loopbacks.empty(); };
        do click("webView");  // a click before the page is drawn misses
        while (!until(isOver, std::chrono::seconds(2)) && --tries > 0);
        EXPECT_THAT(log->loopbacks, AllOf(Not(IsEmpty()), Each("http://127.0.0.1/?z2=0")));
        EXPECT_EQ(windowCount(), 2U);
    }
}

TEST_F(SceneTest, CoversTheScreenAndIsTheTopMostThen) {
    const auto& windows = *Platform::current().windows;
    EXPECT_FALSE(windows.keyWindow()->rootViewController()->presentedViewController());
    showPage("<p>Enter your code");
    ASSERT_TRUE(until([&] { return shown() == "page"; }));
    EXPECT_THAT(log->events, ElementsAre("did load", "will appear", "did appear"));

    log->events.clear();
    present();
    EXPECT_THAT(log->events, IsEmpty());
    scene->dismiss(true);
    EXPECT_THAT(log->events, ElementsAre("will disappear", "did disappear"));
    EXPECT_EQ(shown(), "nothing");
}

TEST_F(SceneTest, RunsAPageHiddenAndShowsAnotherLater) {
    runHidden("<title>fingerprint</title><script>location='http://127.0.0.1/?z2=1'</script>");
    EXPECT_TRUE(until([&] { return shown() == "working"; }));
    ASSERT_TRUE(until([&] { return !log->loopbacks.empty(); }));
    EXPECT_EQ(text("host"), "Card check");

    showPage("<p>Enter your code");
    EXPECT_EQ(text("working"), "One moment, please…");
    ASSERT_TRUE(until([&] { return shown() == "page"; }));
    EXPECT_EQ(text("host"), "localhost");
    EXPECT_EQ(text("security"), "The connection is not secure");
}

TEST_F(SceneTest, NamesTheHostOfThePageThatIsThereAndNotOfOneThatIsOnItsWay) {
    server.serveNothing("/slow");
    showPage("<script>location='http://user@localhost.:" + server.port() + "/slow'</script>");
    ASSERT_TRUE(until([&] { return std::ranges::count(server.requests(), "GET /slow") > 0; }));
    EXPECT_EQ(text("host"), "localhost");
}

TEST_F(SceneTest, ShowsNothingThatACertificateDoesNotProve) {
    present();
    for (const auto& identity :
         {sandbox::Authority::selfSigned({"localhost"}), authority().issue({"other.example"}),
          authority().issue({"localhost"}, std::chrono::hours(-1)), sandbox::Authority().issue({"localhost"})}) {
        const RawServer secure(identity, answering(httpReply(200, "page")));
        const auto port = secure.address().substr(std::string("127.0.0.1").size());
        scene->webView()->loadUrl("https://localhost" + port, std::chrono::seconds(60));
        EXPECT_NE(shown(), "failed");
        EXPECT_TRUE(until([&] { return shown() == "failed"; }));
        EXPECT_THAT(secure.requests(), IsEmpty());
    }
}

TEST_F(SceneTest, SaysWhenAPageCannotBeLoadedAndOffersAWayBack) {
    const std::string nowhere = PageServer().url("/");  // a server that is gone
    scene->webView()->loadUrl(nowhere, std::chrono::seconds(60));
    present();
    ASSERT_TRUE(until([&] { return shown() == "failed"; }));
    EXPECT_EQ(text("back"), "Try again");
    log->urls.clear();
    click("back");
    ASSERT_TRUE(until([&] { return !log->urls.empty() && shown() == "failed"; }));
    EXPECT_THAT(log->urls, ElementsAre(nowhere));

    showPage("<p>Enter your code<script>setTimeout(() => location='" + nowhere + "')</script>");
    ASSERT_TRUE(until([&] { return shown() == "failed"; }));
    EXPECT_EQ(text("back"), "Back");
    click("back");
    EXPECT_TRUE(until([&] { return shown() == "page"; }));
}

TEST_F(SceneTest, GivesAPageUpOfWhichNothingComes) {
    server.serveNothing("/slow");
    scene->webView()->loadUrl(server.url("/slow"), std::chrono::seconds(1));
    present();
    EXPECT_TRUE(until([&] { return shown() == "failed"; }));
}

TEST_F(SceneTest, LoadsAPageAgainThatWebKitLostButOnlyOnce) {
    server.serveNothing("/slow");
    scene->webView()->loadUrl(server.url("/slow"), std::chrono::seconds(60));
    present();
    const auto isAskedFor = [&](int times) { return std::ranges::count(server.requests(), "GET /slow") == times; };
    ASSERT_TRUE(until([&] { return isAskedFor(1); }));
    loseLoad(server.url("/slow"));
    EXPECT_TRUE(until([&] { return isAskedFor(2); }));
    EXPECT_EQ(shown(), "working");
    loseLoad(server.url("/slow"));
    EXPECT_EQ(shown(), "failed");
}

TEST_F(SceneTest, OutlivesItsWebProcess) {
    showPage("<p>page");
    ASSERT_TRUE(until([&] { return shown() == "page"; }));
    endWebProcess();
    ASSERT_TRUE(until([&] { return shown() == "failed"; }));
    click("back");
    EXPECT_TRUE(until([&] { return shown() == "page"; }));
}

TEST_F(SceneTest, MayBeDismissedOrLoadedAnewWhereAPageEnds) {
    for (const bool dismissed : {true, false}) {
        log->onLoad = [&](const std::string& url) {
            if (!url.starts_with("http://127.0.0.1")) return;
            dismissed ? scene->dismiss(true) : showPage("<p>challenge");
        };
        runHidden("<script>location='http://127.0.0.1/?z2=1'</script>");
        EXPECT_TRUE(until([&] { return shown() == (dismissed ? "nothing" : "page"); }));
        renew();
    }
}

TEST_F(SceneTest, TakesItForACloseWhenTheHostDestroysItsWindow) {
    log->onClose = [&] { scene->dismiss(true); };
    showPage("<p>page");
    gtk_window_destroy(window());
    EXPECT_EQ(log->closes, 1);
    EXPECT_EQ(log->events.back(), "did disappear");
}

}  // namespace
}  // namespace kavio::test
