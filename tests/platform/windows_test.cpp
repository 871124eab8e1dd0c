#include <kavio/testing/conformance/windows.h>
#include <kavio/testing/screen.h>

namespace kavio::test {
namespace {

/// The screen of a device in a box.
class BoxDriver final : public WindowsDriver {
public:
    std::shared_ptr<Windows> windows() override { return mScreen; }
    bool runUntil(const std::function<bool()>& done) override {
        for (int steps = 0; !done() && steps < 1000; ++steps) mScreen->step();
        return done();
    }
    std::string serve(const std::string& path, const std::vector<Deed>& deeds) override {
        auto url = "http://issuer.example" + path;
        mScreen->pages[url] = deeds;
        return url;
    }
    std::string document(const std::vector<Deed>& deeds) override {
        mScreen->pages["document"] = deeds;
        return "document";
    }
    std::string nowhere() override { return "http://nowhere.example/"; }
    std::string shown() override { return mScreen->shown(); }
    void pressClose() override { mScreen->pressClose(); }
    void pressBack() override { mScreen->pressBack(); }
    void endPageProcess() override { mScreen->endPageProcess(); }

private:
    const std::shared_ptr<Screen> mScreen = std::make_shared<Screen>();
};

std::unique_ptr<WindowsDriver> makeDriver() { return std::make_unique<BoxDriver>(); }

INSTANTIATE_TEST_SUITE_P(Box, WindowsConformance, testing::Values(&makeDriver));

}  // namespace
}  // namespace kavio::test
