#include "gtk/enrolling.h"
#include "support/from_environment.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kavio::test {
namespace {

using sandbox::GalleryPage;
using sandbox::Person;

/// Each page of the sandbox's gallery, from the card to the report.
class GalleryTest : public Enrolling, public testing::WithParamInterface<GalleryPage> {};

TEST_P(GalleryTest, EndsInOneReport) {
    const auto& page = GetParam();
    if (page.person != Person::nothing && std::getenv("WAYLAND_DISPLAY")) GTEST_SKIP() << "nobody can type on Wayland";
    for (int run = 1; run <= fromEnvironment("KAVIO_GALLERY_RUNS", 1) && !HasFailure(); ++run) {
        SCOPED_TRACE(run);
        enrol(std::string(page.number));
        EXPECT_TRUE(leaveToEnd(page.person, [this] { return reports().size() > expected.size(); })) << shown();
        expect(reportOf(page));
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
