#pragma once

// What windows and their web view promise. A port makes a driver, and instantiates both suites:
//   INSTANTIATE_TEST_SUITE_P(Gtk, WindowsConformance, testing::Values(&makeDriver<WindowsDriver>));
//   INSTANTIATE_TEST_SUITE_P(Gtk, WebViewConformance, testing::Values(&makeDriver<WebViewDriver>));
// The second one needs a real web view, with pages in HTML; a scripted one passes the first.

#include <kavio/testing/conformance/web_view.h>
#include <kavio/testing/conformance/windows_driver.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kavio::test {

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

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WindowsConformance);

}  // namespace kavio::test
