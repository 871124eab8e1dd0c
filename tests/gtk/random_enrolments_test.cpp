#include "gtk/enrolling.h"
#include "gtk/usage.h"
#include "support/from_environment.h"

#include <gmock/gmock.h>

#include <array>
#include <iostream>
#include <random>
#include <thread>

namespace kavio::test {
namespace {

using sandbox::GalleryPage;
using sandbox::Person;

/// A report, and to which facade's delegate it came.
struct Told {
    std::size_t facade;
    Report report;
    bool operator==(const Told&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Told& told) { return out << told.facade << " " << told.report; }

/// Two facades, to whose enrolments anything may happen at any time.
class RandomEnrolments : public Enrolling {
public:
    RandomEnrolments() {
        kavio.reset();  // it has signed the person in for the others
        // WebKit never forgets a page that goes on while its download begins, nor one that ends while the process of
        // its service worker starts.
        std::erase_if(pages, [](const auto& page) { return page.name == "download" || page.name == "service-worker"; });
        for (std::size_t i = 0; i < mFacades.size(); ++i) renew(i);
    }

    template <class List>
    const auto& anyOf(const List& list) {
        return list[mRandom() % list.size()];
    }

    // What may happen to an enrolment.

    void leaveAlone(std::size_t facade, const GalleryPage& page) {
        begin(facade, page);
        finish(facade, page);
    }
    void close(std::size_t facade, const GalleryPage& page) {
        begin(facade, page);
        runToARandomInstant();
        EXPECT_TRUE(until([this] { return window() || isOver(); }));
        if (isOver()) return expectNext(facade, reportOf(page));
        const auto seen = shown();
        g_signal_emit_by_name(findIn(GTK_WIDGET(window()), "close"), "clicked");
        EXPECT_EQ(shown(), "nothing");
        if (isOver()) return expectNext(facade, canceled);
        EXPECT_NE(seen, "page") << "only a page that has ended does not end by being closed";
        finish(facade, page);
    }
    void release(std::size_t facade, const GalleryPage& page) {
        begin(facade, page);
        runToARandomInstant();
        letGo(facade, page, [](std::unique_ptr<Kavio>& used) { used->release(used.get()); });
    }
    void destroy(std::size_t facade, const GalleryPage& page) {
        begin(facade, page);
        runToARandomInstant();
        letGo(facade, page, [](std::unique_ptr<Kavio>& used) { used.reset(); });
    }
    /// Takes the place of the other facade's page, which waits for a person.
    void overtake(std::size_t facade, const GalleryPage& page) {
        const auto other = 1 - facade;
        const auto* overtaken = &anyOf(pages);
        while (overtaken->person != Person::pressEnter) overtaken = &anyOf(pages);
        SCOPED_TRACE(overtaken->name);
        begin(other, *overtaken);
        EXPECT_TRUE(until([] { return shown() == "page"; }));
        begin(facade, page);
        EXPECT_TRUE(until([this] { return isOver(); }));
        mExpected.push_back({other, takenAway});
        finish(facade, page);
    }

    /// What is in use between two enrolments, when all processes are gone. The one for the network goes with the last
    /// session, so it would stay if WebKit still held a page.
    static Usage atRest() {
        EXPECT_TRUE(until([] { return processes("WebKit").empty(); }))
            << webProcesses().size() << " web processes of " << processes("WebKit").size();
        return Usage::now();
    }
    void dropFacades() { mFacades = {}; }
    void expectAllTold() const { EXPECT_EQ(mTold, mExpected); }

    std::mt19937 mRandom;
    std::vector<GalleryPage> pages{sandbox::galleryPages().begin(), sandbox::galleryPages().end()};

private:
    void renew(std::size_t facade) {
        const auto& listener = mDelegates.emplace_back(std::make_shared<RecordingDelegate>());
        listener->onReport = [this, facade](const Report& report) {
            EXPECT_EQ(std::this_thread::get_id(), mMainThread);
            mTold.push_back({facade, report});
        };
        mFacades[facade] = std::make_unique<Kavio>(listener, "key", Kavio::EnvironmentType::TEST);
    }
    void begin(std::size_t facade, const GalleryPage& page) {
        sandbox.clearRequests();
        enrol(*mFacades[facade], std::string(page.number));
    }
    bool isOver() const { return mTold.size() > mExpected.size(); }
    /// A random number of requests, or as many as are made without a person, and then of turns of the main loop.
    void runToARandomInstant() {
        const auto requests = mRandom() % 8;
        EXPECT_TRUE(until([&] {
            return sandbox.requests().size() >= requests || isOver() || shown() == "page" || shown() == "failed";
        }));
        for (auto turns = mRandom() % 300; turns > 0; --turns) g_main_context_iteration(nullptr, FALSE);
    }
    void finish(std::size_t facade, const GalleryPage& page) {
        EXPECT_TRUE(leaveToEnd(page.person, [this] { return isOver(); })) << shown();
        expectNext(facade, reportOf(page));
    }
    template <class Deed>
    void letGo(std::size_t facade, const GalleryPage& page, Deed deed) {
        if (isOver()) expectNext(facade, reportOf(page));
        deed(mFacades[facade]);
        EXPECT_EQ(shown(), "nothing");
        renew(facade);
    }
    void expectNext(std::size_t facade, const Report& report) {
        mExpected.push_back({facade, report});
        expectAllTold();
    }

    const std::thread::id mMainThread = std::this_thread::get_id();
    std::vector<std::shared_ptr<RecordingDelegate>> mDelegates;  // those of facades that are gone, too
    std::array<std::unique_ptr<Kavio>, 2> mFacades;
    std::vector<Told> mTold;
    std::vector<Told> mExpected;
};

/// KAVIO_ENROLMENTS says how many, KAVIO_SEED which.
TEST_F(RandomEnrolments, EndInTheirReportsAndLeaveNothingBehind) {
    if (std::getenv("WAYLAND_DISPLAY")) GTEST_SKIP() << "nobody can type on Wayland";
    using Deed = void (RandomEnrolments::*)(std::size_t, const GalleryPage&);
    struct Course {
        const char* name;
        Deed deed;
    };
    const std::vector<Course> courses{{"left alone", &RandomEnrolments::leaveAlone},
                                      {"closed", &RandomEnrolments::close},
                                      {"released", &RandomEnrolments::release},
                                      {"destroyed", &RandomEnrolments::destroy},
                                      {"overtaking", &RandomEnrolments::overtake}};
    const auto seed = static_cast<unsigned>(fromEnvironment("KAVIO_SEED", int(std::random_device()() >> 1)));
    std::cout << "KAVIO_SEED=" << seed << std::endl;
    mRandom.seed(seed);
    const auto count = fromEnvironment("KAVIO_ENROLMENTS", 20);
    const bool isLong = count >= 100;  // in a short run the caches are not full yet
    Usage early;
    for (int i = 1; i <= count && !HasFailure(); ++i) {
        const auto& course = anyOf(courses);
        const auto& page = anyOf(pages);
        SCOPED_TRACE(std::to_string(i) + ": " + std::string(page.name) + ", " + course.name);
        (this->*course.deed)(mRandom() % 2, page);
        if (isLong && i == count / 4) early = atRest();
    }
    dropFacades();
    EXPECT_EQ(shown(), "nothing");
    EXPECT_EQ(windowCount(), 1U);
    expectAllTold();
    const auto last = atRest();
    if (!isLong) return;
    std::cout << "at first " << early << ", at last " << last << std::endl;
    EXPECT_TRUE(until([&] { return Usage::now().files <= early.files && Usage::now().threads <= early.threads; }));
    EXPECT_LT(last.pages, early.pages * 5 / 4);
}

}  // namespace
}  // namespace kavio::test
