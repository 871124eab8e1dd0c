#pragma once

// What windows and their web view promise. A port makes a driver, and instantiates both suites:
//   INSTANTIATE_TEST_SUITE_P(Gtk, WindowsConformance, testing::Values(&makeDriver<WindowsDriver>));
//   INSTANTIATE_TEST_SUITE_P(Gtk, WebViewConformance, testing::Values(&makeDriver<WebViewDriver>));
// The second one needs a real web view, with pages in HTML; a scripted one passes the first.

#include <kavio/platform/ui.h>
#include <kavio/testing/deed.h>
#include <kavio/testing/logged_scene.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::test {

/// One implementation, with the application's window on the screen, servers for the pages, and the person.
class WindowsDriver {
public:
    virtual ~WindowsDriver() = default;
    /// The implementation that is judged.
    virtual std::shared_ptr<Windows> windows() = 0;
    /// Lets the main thread and the pages run until `done`; false if that takes too long.
    virtual bool runUntil(const std::function<bool()>& done) = 0;
    /// The address of a page that does `deeds`, of a host that is not the loopback address by name.
    virtual std::string serve(const std::string& path, const std::vector<Deed>& deeds) = 0;
    /// The same as a document for `loadHtml`.
    virtual std::string document(const std::vector<Deed>& deeds) = 0;
    /// The address of a server that is gone.
    virtual std::string nowhere() = 0;
    /// What the top-most scene shows: "working", "page", "failed"; "nothing" when there is none.
    virtual std::string shown() = 0;
    ///@{
    /// The person presses the scene's buttons: the one that closes it, and the one of a page that has failed.
    virtual void pressClose() = 0;
    virtual void pressBack() = 0;
    ///@}
    /// Ends the process that runs the page.
    virtual void endPageProcess() = 0;
};

/// One with a real web view.
class WebViewDriver : public WindowsDriver {
public:
    /// The address of a page with this HTML.
    virtual std::string serveHtml(const std::string& path, const std::string& html) = 0;
    /// The address of a redirect to `location`.
    virtual std::string serveRedirect(const std::string& path, const std::string& location, int status = 302) = 0;
    /// Over TLS, from a server of its own, for which the authority vouches that the application gave.
    virtual std::string serveSecurely(const std::string& html) = 0;
    /// The requests to the latest server of that kind, head and body.
    virtual std::vector<std::string> secureRequests() = 0;
    /// What the bar says: "HOST, SECURITY".
    virtual std::string bar() = 0;
    /// The person presses a key: "Return", "space" or "Escape".
    virtual void pressKey(const std::string& key) = 0;
};

/// The screen that covers all others.
inline std::shared_ptr<ViewController> topMost(const Windows& windows) {
    auto found = windows.keyWindow()->rootViewController();
    while (auto above = found->presentedViewController()) found = above;
    return found;
}

/// What the suites of windows share.
template <class Driver>
class ConformanceWith : public testing::TestWithParam<std::unique_ptr<Driver> (*)()> {
protected:
    std::unique_ptr<LoggedScene> presented() const {
        auto made = std::make_unique<LoggedScene>(*driver->windows());
        topMost(*driver->windows())->present(made->scene, true);
        return made;
    }
    bool becomes(const std::string& shown) const {
        return driver->runUntil([&] { return driver->shown() == shown; });
    }

    using Kind = Deed::Kind;

    const std::unique_ptr<Driver> driver = this->GetParam()();
};

/// The address by which these pages end, with a query to be passed on unchanged.
inline const std::string pageEnd = "http://127.0.0.1/?g1=a%20b&z2=%C3%A9+";

/// What windows and scenes promise.
class WindowsConformance : public ConformanceWith<WindowsDriver> {};

TEST_P(WindowsConformance, PresentsASceneOnceAndTellsOfEachStep) {
    SCOPED_TRACE("Promise: A scene is presented once and dismissed once, and its delegate is told of each step.");
    const auto screen = topMost(*driver->windows());
    EXPECT_FALSE(screen->presentedViewController());
    const auto made = presented();
    EXPECT_TRUE(becomes("working"));
    EXPECT_TRUE(screen->presentedViewController());
    screen->present(made->scene, true);
    EXPECT_EQ(made->log->events, (std::vector<std::string>{"did load", "will appear", "did appear"}));

    made->log->events.clear();
    const auto view = made->scene->webView();
    made->scene->dismiss(true);
    made->scene->dismiss(true);
    topMost(*driver->windows())->present(made->scene, true);
    view->loadHtml(driver->document({{Kind::GO, pageEnd}}));
    EXPECT_EQ(driver->shown(), "nothing");
    EXPECT_EQ(made->log->events, (std::vector<std::string>{"will disappear", "did disappear"}));
    EXPECT_EQ(made->scene->webView(), nullptr);
    EXPECT_FALSE(topMost(*driver->windows())->presentedViewController());
}

TEST_P(WindowsConformance, ShowsAPreparedSceneNoEarlierThanAnyOther) {
    SCOPED_TRACE(
        "Promise: Nothing is seen of a scene that is prepared, nor told of it, until it is presented. Then it is a "
        "scene "
        "like any other. Those that are let go before leave the others alone.");
    if (!driver->windows()->prepareScene()) GTEST_SKIP() << "nothing is to be gained here";
    const auto below = presented();
    const LoggedScene made(driver->windows()->prepareScene());
    auto unused = driver->windows()->prepareScene();
    const auto page = driver->serve("/below", {});
    below->show(page);
    EXPECT_TRUE(becomes("page"));
    unused.reset();
    EXPECT_FALSE(topMost(*driver->windows())->presentedViewController());
    EXPECT_EQ(driver->shown(), "page");
    EXPECT_EQ(made.log->events, std::vector<std::string>{});

    topMost(*driver->windows())->present(made.scene, true);
    EXPECT_EQ(made.log->events, (std::vector<std::string>{"did load", "will appear", "did appear"}));
    made.runHidden(driver->document({{Kind::GO, pageEnd}}));
    EXPECT_TRUE(driver->runUntil([&] { return !made.log->ends.empty(); }));
    EXPECT_EQ(made.log->ends, std::vector<std::string>{pageEnd});
    made.log->urls.clear();
    const auto next = driver->serve("/next", {});
    made.show(next);
    EXPECT_TRUE(becomes("page"));
    EXPECT_EQ(made.log->urls, std::vector<std::string>{next});
    EXPECT_EQ(below->log->urls, std::vector<std::string>{page});
}

TEST_P(WindowsConformance, TakesASceneAwayThatNobodyHolds) {
    SCOPED_TRACE("Promise: A scene that nobody holds any more is dismissed.");
    auto scene = driver->windows()->makeScene();
    topMost(*driver->windows())->present(scene, true);
    EXPECT_TRUE(becomes("working"));
    scene.reset();
    EXPECT_EQ(driver->shown(), "nothing");
}

TEST_P(WindowsConformance, ShowsAPageAndRunsADocumentOutOfSight) {
    SCOPED_TRACE("Promise: A hidden page runs out of sight, and the person sees that something is under way.");
    const auto made = presented();
    made->runHidden(driver->document({{Kind::GO, pageEnd}}));
    EXPECT_TRUE(driver->runUntil([&] { return !made->log->ends.empty(); }));
    EXPECT_EQ(driver->shown(), "working");
    made->show(driver->serve("/challenge", {}));
    EXPECT_EQ(driver->shown(), "working");
    EXPECT_TRUE(becomes("page"));
    made->scene->webView()->setHidden(true);
    EXPECT_EQ(driver->shown(), "working");
    made->show(driver->nowhere());
    EXPECT_TRUE(becomes("failed"));
}

TEST_P(WindowsConformance, OffersEachNavigationOnce) {
    SCOPED_TRACE("Promise: Each navigation of a page or of its frames is offered exactly once, in order.");
    const auto made = presented();
    const auto framed = driver->serve("/framed", {{Kind::FRAME, pageEnd}});
    const auto second = driver->serve("/second", {{Kind::FRAME, framed}});
    const auto first = driver->serve("/first", {{Kind::GO, second}});
    made->show(first);
    EXPECT_TRUE(driver->runUntil([&] { return !made->log->ends.empty(); }));
    const auto last = driver->serve("/last", {});
    made->show(last);
    EXPECT_TRUE(becomes("page"));
    EXPECT_EQ(made->log->urls, (std::vector<std::string>{first, second, framed, pageEnd, last}));
}

TEST_P(WindowsConformance, OffersNothingOfAPageOnceAnotherLoadHasBegun) {
    SCOPED_TRACE(
        "Promise: Once another load has begun, nothing of the page before is offered, followed or shown any more.");
    for (const bool isHidden : {true, false}) {
        for (const bool inside : {true, false}) {
            SCOPED_TRACE(testing::Message() << (isHidden ? "hidden" : "shown") << (inside ? ", inside" : ""));
            const auto made = presented();
            const std::vector<Deed> deeds{{Kind::FRAMES_FOR_EVER, pageEnd}};
            const auto next = driver->serve("/next", {{Kind::GO, driver->serve("/after", {})}});
            bool hasBegun = false;
            const auto begin = [&] {
                made->log->onLoad = nullptr;
                made->log->urls.clear();
                hasBegun = true;
                made->show(next);
            };
            if (inside) {
                made->log->onLoad = [&](const std::string&) {
                    if (made->log->ends.size() >= 5) begin();
                };
            }
            isHidden ? made->runHidden(driver->document(deeds)) : made->show(driver->serve("/restless", deeds));
            ASSERT_TRUE(driver->runUntil([&] { return inside ? hasBegun : made->log->ends.size() >= 5; }));
            if (!inside) begin();
            const auto after = driver->serve("/after", {});
            EXPECT_TRUE(driver->runUntil([&] { return made->log->urls.size() >= 2 && driver->shown() == "page"; }));
            EXPECT_EQ(made->log->urls, (std::vector<std::string>{next, after}));
        }
    }
}

TEST_P(WindowsConformance, MayBeDismissedWhereANavigationIsOffered) {
    SCOPED_TRACE("Promise: A scene may be dismissed where a navigation is offered, and nothing is offered afterwards.");
    const auto made = presented();
    made->log->onLoad = [&](const std::string& url) {
        if (url == pageEnd) made->scene->dismiss(true);
    };
    made->runHidden(driver->document({{Kind::FRAMES_FOR_EVER, pageEnd}}));
    EXPECT_TRUE(becomes("nothing"));
    EXPECT_EQ(made->log->ends.size(), 1U);
}

TEST_P(WindowsConformance, KeepsAPageThatHasEndedCoveredUntilTheNextLoad) {
    const auto made = presented();
    const auto framed = driver->serve("/framed", {});
    const auto late = driver->serve("/late", {{Kind::FRAME, framed}});
    made->show(driver->serve("/page", {{Kind::FRAME, pageEnd}, {Kind::GO, late}}));
    EXPECT_TRUE(driver->runUntil([&] { return made->log->lastUrl() == framed; }));
    EXPECT_EQ(driver->shown(), "working");
    made->show(late);
    EXPECT_TRUE(becomes("page"));

    // Nor is it the next load that the view is not to be hidden any more: that may never come.
    made->runHidden(driver->document({{Kind::FRAME, pageEnd}, {Kind::GO, late}}));
    EXPECT_TRUE(driver->runUntil([&] { return made->log->ends.size() == 2; }));
    made->scene->webView()->setHidden(false);
    made->log->urls.clear();
    EXPECT_TRUE(driver->runUntil([&] { return made->log->lastUrl() == framed; }));
    EXPECT_EQ(driver->shown(), "working");
}

TEST_P(WindowsConformance, StaysWithThePageThatGoesWhereItMayNot) {
    SCOPED_TRACE(
        "Promise: Only http, https, about, data and blob addresses are followed, and the page that went elsewhere "
        "stays.");
    const auto made = presented();
    const auto framed = driver->serve("/framed", {});
    for (const std::string url : {"file:///etc/passwd", "mailto:a@b.example", "kavio-test:x"}) {
        for (const auto kind : {Kind::GO, Kind::FRAME, Kind::OPEN}) {
            SCOPED_TRACE(url + ", " + std::to_string(static_cast<int>(kind)));
            made->log->urls.clear();
            made->show(driver->serve("/page", {{kind, url}, {Kind::FRAME, framed}}));
            EXPECT_TRUE(driver->runUntil([&] { return made->log->lastUrl() == framed && driver->shown() == "page"; }));
            EXPECT_LE(std::count(made->log->urls.begin(), made->log->urls.end(), url), 1);
        }
    }
}

TEST_P(WindowsConformance, AsksToBeClosedInEachStateAndStaysUntilItIs) {
    SCOPED_TRACE("Promise: The person can always ask to leave, and the scene stays until it is dismissed.");
    for (const std::string state : {"working", "page", "failed"}) {
        SCOPED_TRACE(state);
        const auto made = presented();
        if (state == "working") made->runHidden(driver->document({}));
        if (state == "page") made->show(driver->serve("/page", {}));
        if (state == "failed") made->show(driver->nowhere());
        EXPECT_TRUE(becomes(state));
        driver->pressClose();
        EXPECT_TRUE(driver->runUntil([&] { return made->log->closes == 1; }));
        EXPECT_EQ(driver->shown(), state);
        made->log->onClose = [&] { made->scene->dismiss(true); };
        driver->pressClose();
        EXPECT_TRUE(becomes("nothing"));
        EXPECT_EQ(made->log->closes, 2);
    }
}

TEST_P(WindowsConformance, OutlivesItsPageAndOffersToTryAgain) {
    SCOPED_TRACE("Promise: A page that crashes takes nothing with it: the scene stays, and offers to try again.");
    const auto made = presented();
    const auto page = driver->serve("/page", {});
    made->show(page);
    EXPECT_TRUE(becomes("page"));
    driver->endPageProcess();
    EXPECT_TRUE(becomes("failed"));
    driver->pressBack();
    EXPECT_TRUE(becomes("page"));
    EXPECT_EQ(made->log->urls, (std::vector<std::string>{page, page}));
}

TEST_P(WindowsConformance, SaysWhenAPageCannotBeLoadedAndOffersAWayBack) {
    SCOPED_TRACE("Promise: A page that cannot be loaded is shown as failed, and the person can try again or go back.");
    const auto made = presented();
    const auto nowhere = driver->nowhere();
    made->show(nowhere);
    EXPECT_TRUE(becomes("failed"));
    driver->pressBack();
    EXPECT_TRUE(driver->runUntil([&] { return made->log->urls.size() == 2 && driver->shown() == "failed"; }));

    const auto page = driver->serve("/page", {{Kind::GO, nowhere}});
    made->show(page);
    EXPECT_TRUE(becomes("failed"));
    driver->pressBack();
    EXPECT_TRUE(becomes("page"));
    EXPECT_EQ(made->log->urls, (std::vector<std::string>{nowhere, nowhere, page, nowhere}));
}

TEST_P(WindowsConformance, KeepsTwoScenesApart) {
    SCOPED_TRACE(
        "Promise: Two scenes know nothing of each other: only the one on top is told, and the one below stays as it "
        "was.");
    const auto below = presented();
    const auto page = driver->serve("/below", {});
    below->show(page);
    EXPECT_TRUE(becomes("page"));
    const auto above = presented();
    above->runHidden(driver->document({{Kind::GO, pageEnd}}));
    EXPECT_TRUE(driver->runUntil([&] { return !above->log->ends.empty(); }));
    driver->pressClose();
    EXPECT_TRUE(driver->runUntil([&] { return above->log->closes == 1; }));
    above->scene->dismiss(true);
    EXPECT_EQ(driver->shown(), "page");
    EXPECT_EQ(below->log->urls, std::vector<std::string>{page});
    EXPECT_EQ(below->log->closes, 0);
    EXPECT_EQ(below->log->events.back(), "did appear");
}

/// What a real web view promises.
class WebViewConformance : public ConformanceWith<WebViewDriver> {
protected:
    bool ends(const LoggedScene& made) const {
        return driver->runUntil([&] { return !made.log->ends.empty(); });
    }
};

TEST_P(WebViewConformance, OffersEachWayToTheEndOfAPageOnce) {
    SCOPED_TRACE(
        "Promise: Whichever way a page goes to the loopback address, that is offered exactly once and never loaded.");
    const std::string form =
        "method=post action='" + pageEnd + "'><input name=x></form><script>document.forms[0].submit()</script>";
    const auto redirect = driver->serveRedirect("/end", pageEnd);
    const auto chain = driver->serveRedirect("/chain", redirect);
    const auto formPage = driver->serveHtml("/form", "<form " + form);
    const auto made = presented();
    for (const auto& [name, html] : std::vector<std::pair<const char*, std::string>>{
             {"a script", "<script>location='" + pageEnd + "'</script>"},
             {"a refresh", "<meta http-equiv=refresh content=\"0;url=" + pageEnd + "\">"},
             {"a redirect", "<script>location='" + redirect + "'</script>"},
             {"a chain of redirects", "<script>location='" + chain + "'</script>"},
             {"a form", "<form " + form},
             {"a frame", "<iframe src='" + pageEnd + "'></iframe>"},
             {"a form in a frame", "<iframe src='" + formPage + "'></iframe>"},
             {"a form into a frame", "<iframe name=f></iframe><form target=f " + form},
             {"a redirect in a frame", "<iframe src='" + chain + "'></iframe>"},
         }) {
        for (const bool isHidden : {true, false}) {
            SCOPED_TRACE(testing::Message() << name << (isHidden ? "" : ", shown"));
            made->log->ends.clear();
            isHidden ? made->runHidden(html) : made->show(driver->serveHtml("/page", html));
            EXPECT_TRUE(ends(*made)) << testing::PrintToString(made->log->urls);
            EXPECT_NE(driver->shown(), "failed");
            EXPECT_EQ(made->log->ends, std::vector<std::string>{pageEnd});
        }
    }
}

/// A script with `finish`, by which a page ends and says something.
inline const std::string finish = "<script>const finish = more => location = 'http://127.0.0.1/?' + more</script>";

/// A script by which a page tells that it is there, with a navigation of its own.
inline const std::string loaded = "<script>onload = () => setTimeout(() => location = '#loaded', 50)</script>";

TEST_P(WebViewConformance, RunsAPageOutOfSightAsIfItWereSeen) {
    SCOPED_TRACE(
        "Promise: A hidden page runs and paints as one that is seen: animations, timers and lazy content go on.");
    const auto made = presented();
    const auto framed = driver->serveHtml("/framed", "framed");
    for (const std::string page : {
             "<script>requestAnimationFrame(() => requestAnimationFrame(finish))</script>",
             "<p>x<script>new IntersectionObserver(seen => seen[0].isIntersecting && finish())"
             ".observe(document.querySelector('p'))</script>",
             "<style>@keyframes k { to { opacity: 0.5 } } p { animation: k 50ms }</style><p "
             "onanimationend='finish()'>x",
             "<iframe loading=lazy onload='finish()' src='FRAMED'></iframe>",
             "<script>let n = 0; (function count() { ++n < 100 ? setTimeout(count) : finish() })()</script>",
         }) {
        SCOPED_TRACE(page);
        auto html = finish + page;
        if (const auto at = html.find("FRAMED"); at != std::string::npos) html.replace(at, 6, framed);
        made->log->ends.clear();
        made->runHidden(html);
        EXPECT_TRUE(ends(*made));
        EXPECT_EQ(driver->shown(), "working");
    }
}

TEST_P(WebViewConformance, IsSeenByTheFirstScript) {
    SCOPED_TRACE("Promise: A document is visible from its first script on.");
    const std::string html = finish + "<script>finish(document.hidden + document.visibilityState)</script>";
    const auto page = driver->serveHtml("/page", html);
    // Those that are prepared are ready by the time of the later ones, and still starting at the time of the first.
    std::vector<std::shared_ptr<TDSecureScene>> scenes(8);
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        if (i % 4 < 2) scenes[i] = driver->windows()->prepareScene();
        if (!scenes[i]) scenes[i] = driver->windows()->makeScene();
    }
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        SCOPED_TRACE(i);
        const LoggedScene made(scenes[i]);
        made.log->onReady = [&] { i % 2 == 0 ? made.show(page) : made.runHidden(html); };
        topMost(*driver->windows())->present(made.scene, true);
        EXPECT_TRUE(ends(made));
        EXPECT_EQ(made.log->ends, std::vector<std::string>{"http://127.0.0.1/?falsevisible"});
    }
}

TEST_P(WebViewConformance, CallsSecureOnlyWhatCameSecurelyAsAWhole) {
    SCOPED_TRACE("Promise: The connection is called secure only if the page and all that it shows came over https.");
    const auto framed = driver->serveHtml("/framed", "framed");
    const auto redirect = driver->serveRedirect("/redirect", framed);
    const std::string secure = ", Secure connection";
    const std::string insecure = ", The connection is not secure";
    const auto inner = driver->serveSecurely("<iframe src='" + framed + "'></iframe>");
    for (const auto& [html, expected] : std::vector<std::pair<std::string, std::string>>{
             {"<p>page", secure},
             {"<script src='" + framed + "'></script>", secure},  // which does not run
             {"<iframe src='" + framed + "'></iframe>", insecure},
             {"<iframe src='" + inner + "'></iframe>", insecure},
             {"<object data='" + framed + "'></object>", insecure},
             {"<embed src='" + framed + "'>", insecure},
             {"<img src='" + framed + "'>", insecure},
             {"<picture><source srcset='" + framed + "'><img></picture>", insecure},
             {"<input type=image src='" + framed + "'>", insecure},
             {"<svg><image href='" + framed + "'></svg>", insecure},
             {"<p style='background:url(" + framed + ")'>page", insecure},
             {"<ul style='list-style-image:url(" + framed + ")'><li>page", insecure},
             {"<p style='border-image:url(" + framed + ")'>page", insecure},
             {"<audio src='" + framed + "'></audio>", insecure},
             {"<video src='" + framed + "'></video>", insecure},
             {"<video poster='" + framed + "'></video>", insecure},
             {"<video><source src='" + framed + "'></video>", insecure},
             {"<iframe name=f></iframe><form target=f method=post action='" + framed +
                  "'></form><script>document.forms[0].submit()</script>",
              insecure},
         }) {
        SCOPED_TRACE(html);
        const auto made = presented();
        const auto page = driver->serveSecurely(html + loaded);
        made->show(page);
        EXPECT_TRUE(driver->runUntil([&] { return made->log->lastUrl() == page + "#loaded"; }));
        EXPECT_EQ(driver->bar().substr(driver->bar().find(',')), expected);
        made->show(driver->serveSecurely("<p>the next one"));
        EXPECT_TRUE(becomes("page"));
        EXPECT_EQ(driver->bar().substr(driver->bar().find(',')), secure);
    }
}

TEST_P(WebViewConformance, EndsASecurePageInAFrame) {
    SCOPED_TRACE("Promise: A frame of a secure page may end it by going to the loopback address over http.");
    for (const auto& location : {pageEnd, driver->serveRedirect("/end", pageEnd)}) {
        const auto made = presented();
        made->show(driver->serveSecurely("<iframe src='" + location + "'></iframe>"));
        EXPECT_TRUE(ends(*made));
        EXPECT_EQ(driver->shown(), "working") << "and not as insecure";
    }
}

TEST_P(WebViewConformance, HoldsNoPageUp) {
    SCOPED_TRACE("Promise: No dialog, permission, download or full screen holds a page up.");
    const std::string download =
        "const a = document.createElement('a'); a.href = 'data:application/x-kavio-test,x'; a.download = 'x'; "
        "a.click(); setTimeout(finish, 100)";
    for (const std::string& script : {
             std::string("alert('a'); confirm('b'); prompt('c'); print(); finish()"),
             std::string("onbeforeunload = () => 'stay'; finish()"),
             std::string(
                 "Notification.requestPermission(); navigator.geolocation.getCurrentPosition(finish); finish()"),
             std::string("document.documentElement.requestFullscreen?.(); finish()"),
             download,
         }) {
        SCOPED_TRACE(script);
        const auto made = presented();
        auto html = finish;
        html.append("<script>onload = () => { ").append(script).append(" }</script>");
        made->show(driver->serveHtml("/page", html));
        EXPECT_TRUE(ends(*made));
    }
}

TEST_P(WebViewConformance, DoesNothingForAKeyButTheOneThatCloses) {
    SCOPED_TRACE("Promise: While no page is shown, no key does anything except leave the scene.");
    for (const std::string state : {"working", "failed"}) {
        SCOPED_TRACE(state);
        const auto made = presented();
        state == "working" ? made->runHidden("<p>goes on for ever") : made->show(driver->nowhere());
        EXPECT_TRUE(becomes(state));
        const auto urls = made->log->urls;
        for (const auto* key : {"Return", "space", "KP_Enter"}) driver->pressKey(key);
        EXPECT_EQ(made->log->closes, 0);
        driver->pressKey("Escape");
        EXPECT_TRUE(driver->runUntil([&] { return made->log->closes > 0; }));
        EXPECT_EQ(made->log->closes, 1);
        EXPECT_EQ(made->log->urls, urls);
        EXPECT_EQ(driver->shown(), state);
    }
}

TEST_P(WebViewConformance, KeepsNothingFromSceneToScene) {
    SCOPED_TRACE("Promise: Nothing outlives a scene, above all no cookie; and within a scene cookies work.");
    const auto page = driver->serveSecurely("<script>document.cookie = 'kavio=1'</script>" + loaded);
    for (int i = 0; i < 2; ++i) {
        const auto made = presented();
        for (int j = 0; j < 2; ++j) {
            const auto url = page + std::to_string(j);
            made->show(url);
            EXPECT_TRUE(driver->runUntil([&] { return made->log->lastUrl() == url + "#loaded"; }));
        }
    }
    std::vector<bool> hasCookie;
    for (const auto& request : driver->secureRequests())
        hasCookie.push_back(request.find("kavio=1") != std::string::npos);
    EXPECT_EQ(hasCookie, (std::vector<bool>{false, true, false, true}));
}

TEST_P(WebViewConformance, SendsAFormWholeToAServerOfTheApplicationsOwnAuthorities) {
    SCOPED_TRACE(
        "Promise: A server that the application's own authorities vouch for is reached like any other, even if the "
        "first thing sent to it is a form.");
    const auto form = [](const std::string& action, const std::string& more) {
        return "<form method=post " + more + " action='" + action +
               "'><input name=x value=1></form><script>document.forms[0].submit()</script>";
    };
    for (const std::string way : {"itself", "a frame", "a redirect"}) {
        SCOPED_TRACE(way);
        const auto made = presented();
        const auto target = driver->serveSecurely("<p>arrived" + finish + "<script>finish()</script>");
        const auto action = way == "a redirect" ? driver->serveRedirect("/redirect", target, 307) : target;
        made->show(driver->serveHtml(
            "/form", way == "a frame" ? "<iframe name=f></iframe>" + form(action, "target=f") : form(action, "")));
        EXPECT_TRUE(ends(*made));
        ASSERT_EQ(driver->secureRequests().size(), 1U);
        EXPECT_THAT(driver->secureRequests().front(),
                    testing::AllOf(testing::StartsWith("POST / "), testing::EndsWith("x=1")));
    }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WebViewConformance);  // for a scripted one

}  // namespace kavio::test
