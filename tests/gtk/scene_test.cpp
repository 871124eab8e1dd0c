#include "gtk/gtk_world.h"

#include <kavio/testing/logged_scene.h>
#include <kavio/testing/raw_server.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <new>

namespace {
bool hasMemoryForProbes = true;
}

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" GSocketClient* __real_g_socket_client_new();
/// What the library calls in place of that one.
extern "C" __attribute__((visibility("default"))) GSocketClient* __wrap_g_socket_client_new() {
    if (!hasMemoryForProbes) throw std::bad_alloc();
    return __real_g_socket_client_new();
}
// NOLINTEND(bugprone-reserved-identifier)

namespace kavio::test {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::Not;

/// With a scene above the window.
class SceneTest : public GtkHost {
protected:
    SceneTest() : GtkHost(trustingTheApplicationAuthority()) { renew(); }

    void present() { Platform::current().windows->keyWindow()->rootViewController()->present(made->scene, true); }
    void show(const std::string& url, std::chrono::seconds timeout = std::chrono::seconds(60)) {
        made->scene->webView()->setHidden(false);
        made->scene->webView()->loadUrl(url, timeout);
        present();
    }
    void showPage(const std::string& html) {
        server.servePage("/page", html);
        show(server.url("/page"));
    }
    /// Continues with a new scene.
    void renew() {
        made.reset();
        made = std::make_unique<LoggedScene>(*Platform::current().windows);
    }

    std::unique_ptr<LoggedScene> made;
};

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
        const auto isOver = [&] { return !made->log->ends.empty(); };
        do click("webView");  // a click before the page is drawn misses
        while (!until(isOver, std::chrono::seconds(2)) && --tries > 0);
        EXPECT_THAT(made->log->ends, AllOf(Not(IsEmpty()), Each("http://127.0.0.1/?z2=0")));
        EXPECT_EQ(windowCount(), 2U);
    }
}

TEST_F(SceneTest, StaysWithThePageWhenThePersonFollowsALinkToAnApp) {
    for (const std::string link : {"kavio-test-bank://approve?payment=1", "intent://approve#Intent;end"}) {
        SCOPED_TRACE(link);
        renew();
        showPage("<a href='" + link + "' style='position:fixed;inset:0'>Open your bank's app</a>");
        ASSERT_TRUE(until([] { return shown() == "page"; }));
        int tries = 10;
        const auto isFollowed = [&] { return made->log->lastUrl() == link; };
        do click("webView");  // a click before the page is drawn misses
        while (!until(isFollowed, std::chrono::seconds(2)) && --tries > 0);
        EXPECT_TRUE(isFollowed());
        EXPECT_EQ(shown() + " of " + text("host"), "page of localhost");
    }
}

TEST_F(SceneTest, SaysWhetherThereIsAPageToGoBackTo) {
    const auto gone = PageServer().url("/");
    show(gone);
    ASSERT_TRUE(until([&] { return shown() == "failed"; }));
    EXPECT_EQ(text("back"), "Try again");
    showPage("<script>setTimeout(() => location='" + gone + "')</script>");
    ASSERT_TRUE(until([&] { return shown() == "failed" && text("back") == "Back"; }));
}

TEST_F(SceneTest, KeepsThePersonAwayFromAPageUnderTheCover) {
    made->runHidden(
        "<script>const end = () => location='http://127.0.0.1/'; onclick = onkeydown = onfocus = end</script>"
        "<input autofocus><script>location='about:blank#ready'; addEventListener('focus', end)</script>");
    present();
    ASSERT_TRUE(until([&] { return made->log->lastUrl() == "about:blank#ready"; }));
    press("Tab");
    click("webView");
    press("a");
    press("Escape");
    ASSERT_TRUE(until([&] { return made->log->closes > 0; }));
    EXPECT_THAT(made->log->ends, IsEmpty());
}

TEST_F(SceneTest, ShowsProgressOnlyWhileSomethingLoads) {
    server.serve("/download",
                 [](const auto&, auto& response) { response.set_content("bytes", "application/octet-stream"); });
    server.serveRedirect("/away", "mailto:a@b.example");
    for (const auto& url : {std::string("mailto:a@b.example"), server.url("/download"), server.url("/away")}) {
        SCOPED_TRACE(url);
        showPage("<p>page<script>setTimeout(() => location = '" + url + "')</script>");
        EXPECT_TRUE(until([&] { return std::ranges::count(made->log->urls, url) > 0 && shown() == "page"; }));
        EXPECT_TRUE(until([] { return !isVisible("progress"); }));
    }
}

TEST_F(SceneTest, EndsAPageThatNeverRestsTogetherWithItsProcess) {
    for (const bool isDismissed : {true, false}) {
        showPage("<script>onload = () => setTimeout(() => { for (;;); })</script>");
        ASSERT_TRUE(until([] { return shown() == "page"; }));
        const auto areBusy = [] {
            const auto all = webProcesses();
            return std::any_of(all.begin(), all.end(), [](const auto& process) { return process.second; });
        };
        ASSERT_TRUE(until(areBusy));
        isDismissed ? made->scene->dismiss(true) : show(server.url("/nothing/there"));
        EXPECT_TRUE(until([&] { return !areBusy(); }, std::chrono::seconds(3)));
        if (isDismissed) renew();
    }
}

TEST_F(SceneTest, NamesTheHostOfThePageThatIsThereAndNotOfOneThatIsOnItsWay) {
    server.serveNothing("/slow");
    showPage("<script>location='http://user@localhost.:" + server.port() + "/slow'</script>");
    ASSERT_TRUE(until([&] { return std::ranges::count(server.requests(), "GET /slow") > 0; }));
    EXPECT_EQ(text("host"), "localhost");
    server.servePage("/odd", "odd");
    show(server.url("/odd?100%#%zz"));
    EXPECT_TRUE(until([&] { return shown() == "page" && text("host") == "localhost"; })) << "no address hides its host";
    EXPECT_EQ(text("security"), "The connection is not secure");
}

TEST_F(SceneTest, CoversWhatEndsAPageAndNothingElse) {
    // Each tried by a frame, as a page might ask another program on the device.
    for (const auto& [address, isEnd] : std::map<std::string, bool>{{"http://127.0.0.2/", false},
                                                                    {"https://127.0.0.1/", false},
                                                                    {"http://[::1]/", false},
                                                                    {"http://127.0.0.1/?z3=100%", true}}) {
        SCOPED_TRACE(address);
        renew();
        showPage("<iframe name=f></iframe><script>onload=()=>f.location='" + address + "'</script>");
        ASSERT_TRUE(until([&, end = address] { return made->log->lastUrl() == end; }));
        EXPECT_EQ(shown() == "page", !isEnd) << shown();
    }
}

TEST_F(SceneTest, ShowsNothingThatACertificateDoesNotProve) {
    for (const auto& identity :
         {Authority::selfSigned({"localhost"}), applicationAuthority().issue({"other.example"}),
          applicationAuthority().issue({"localhost"}, std::chrono::hours(-1)), Authority().issue({"localhost"})}) {
        const RawServer secure(identity, answering(httpReply(200, "page")));
        const auto port = secure.address().substr(std::string("127.0.0.1").size());
        const auto url = "https://localhost" + port;
        show(url);
        EXPECT_NE(shown(), "failed");
        EXPECT_TRUE(until([&] { return shown() == "failed"; }));
        showPage("<form method=post action='" + url + "'></form><script>document.forms[0].submit()</script>");
        EXPECT_TRUE(until([&] { return shown() == "failed"; }));
        EXPECT_THAT(secure.requests(), IsEmpty());
    }
}

TEST_F(SceneTest, GivesAPageUpOfWhichNothingComes) {
    server.serveNothing("/slow");
    show(server.url("/slow"), std::chrono::seconds(1));
    EXPECT_TRUE(until([&] { return shown() == "failed"; }));
}

TEST_F(SceneTest, WaitsForACertificateNoLongerThanForAPage) {
    for (const auto slowly : {&RawServer::Connection::stall, &RawServer::Connection::dripHandshake}) {
        const RawServer slow(applicationAuthority().issue({"localhost"}), [&](auto& connection) {
            connection.number() > 0 ? static_cast<void>(connection.handshake()) : (connection.*slowly)();
        });
        const auto url = "https://localhost" + slow.address().substr(std::string("127.0.0.1").size());
        server.servePage("/page", "<script>location = '" + url + "'</script>");
        renew();
        show(server.url("/page"), std::chrono::seconds(1));
        EXPECT_TRUE(until([&] { return shown() == "failed"; }, std::chrono::seconds(10)));
    }
}

TEST_F(SceneTest, GoesOnWithoutACertificateThatItHasNoMemoryToAskFor) {
    const RawServer secure(applicationAuthority().issue({"localhost"}),
                           answering(httpReply(200, "page", "Content-Type: text/html\r\nConnection: close\r\n")));
    hasMemoryForProbes = false;
    show("https://localhost" + secure.address().substr(std::string("127.0.0.1").size()));
    EXPECT_TRUE(until([] { return shown() == "failed"; }));
    EXPECT_THAT(secure.requests(), IsEmpty());
    hasMemoryForProbes = true;
    click("back");
    EXPECT_TRUE(until([] { return shown() == "page"; }));
}

TEST_F(SceneTest, HearsNothingMoreOfTheServersOfAPageThatItGaveUp) {
    std::promise<void> givingUp;
    const auto isGivenUp = givingUp.get_future().share();
    std::atomic<int> open = 0;
    std::atomic<int> trusting = 0;
    const RawServer late(applicationAuthority().issue({"localhost"}), [&](auto& connection) {
        ++open;
        isGivenUp.wait();
        if (connection.handshake()) ++trusting;
        --open;
    });
    show("https://localhost" + late.address().substr(std::string("127.0.0.1").size()), std::chrono::seconds(1));
    EXPECT_TRUE(until([] { return shown() == "failed"; }));
    EXPECT_GT(open, 0);
    givingUp.set_value();
    EXPECT_TRUE(until([&] { return open == 0; }));
    EXPECT_EQ(trusting, 0);
    EXPECT_EQ(shown(), "failed");
}

TEST_F(SceneTest, LoadsAPageAgainThatWebKitLostButOnlyOnce) {
    server.serveNothing("/slow");
    show(server.url("/slow"));
    const auto isAskedFor = [&](int times) { return std::ranges::count(server.requests(), "GET /slow") == times; };
    ASSERT_TRUE(until([&] { return isAskedFor(1); }));
    loseLoad(server.url("/slow"));
    EXPECT_TRUE(until([&] { return isAskedFor(2); }));
    EXPECT_EQ(shown(), "working");
    loseLoad(server.url("/slow"));
    EXPECT_EQ(shown(), "failed");
}

TEST_F(SceneTest, TakesItForACloseWhenTheHostDestroysItsWindow) {
    // A controller without the memory to answer may need to be asked again.
    for (const int answered : {1, 3}) {
        renew();
        made->log->onClose = [&] {
            if (made->log->closes == answered) made->scene->dismiss(true);
        };
        showPage("<p>page");
        gtk_window_destroy(window());
        EXPECT_EQ(made->log->closes, 1);
        EXPECT_TRUE(until([&] { return made->log->events.back() == "did disappear"; }));
        EXPECT_EQ(made->log->closes, answered);
    }
}

}  // namespace
}  // namespace kavio::test
