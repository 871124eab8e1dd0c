#pragma once

// What a web view promises, with pages in HTML; windows.h includes this.

#include <kavio/testing/conformance/windows_driver.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kavio::test {

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
