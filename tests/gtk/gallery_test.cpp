#include "sandbox/gallery.h"

#include "gtk/enrolling.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kavio::test {
namespace {

using sandbox::GalleryPage;
using sandbox::Person;

int runs() {
    const char* wanted = std::getenv("KAVIO_GALLERY_RUNS");
    return wanted ? std::stoi(wanted) : 1;
}

/// Each page of the sandbox's gallery, from the card to the report.
class GalleryTest : public Enrolling, public testing::WithParamInterface<GalleryPage> {
protected:
    void actAs(Person person) {
        switch (person) {
            case Person::nothing:
                return;
            case Person::pressEnter:
                return pressEnter();
            case Person::tryAgain:
                EXPECT_TRUE(until([] { return shown() == "failed"; }));
                return click("back");
            case Person::close:
                EXPECT_TRUE(until([] { return shown() == "page" || shown() == "failed"; }));
                return press("Escape");
        }
    }
    /// Until the page is ready for it.
    void pressEnter() {
        EXPECT_TRUE(until([] { return shown() == "page"; }));
        const auto isOver = [this] { return shown() != "page" || reports().size() > expected.size(); };
        for (int tries = 10; tries > 0 && !until(isOver, std::chrono::seconds(1)); --tries) press("Return");
    }
};

TEST_P(GalleryTest, EndsInOneReport) {
    const auto& page = GetParam();
    if (page.person != Person::nothing && std::getenv("WAYLAND_DISPLAY")) GTEST_SKIP() << "nobody can type on Wayland";
    const auto report = page.person == Person::close ? canceled
                        : page.refusal.empty()       ? success
                                                     : serverError("error: " + std::string(page.refusal));
    for (int run = 1; run <= runs() && !HasFailure(); ++run) {
        SCOPED_TRACE(run);
        enrol(std::string(page.number));
        actAs(page.person);
        expect(report);
        EXPECT_EQ(shown(), "nothing");
        EXPECT_EQ(windowCount(), 1U);
    }
}

std::string nameOf(const testing::TestParamInfo<GalleryPage>& page) {
    std::string name(page.param.name);
    std::ranges::replace(name, '-', '_');
    return name;
}
INSTANTIATE_TEST_SUITE_P(Pages, GalleryTest, testing::ValuesIn(sandbox::galleryPages()), nameOf);

}  // namespace
}  // namespace kavio::test
