#include "platform/windows_conformance.h"
#include "support/fakes/fake_windows.h"

namespace kavio::test {
namespace {

class ScriptedDriver final : public WindowsDriver {
public:
    std::shared_ptr<Windows> windows() override { return mWindows; }
    bool runUntil(const std::function<bool()>& done) override {
        for (int steps = 0; !done() && steps < 1000; ++steps) mWindows->step();
        return done();
    }
    std::string serve(const std::string& path, const std::vector<Deed>& deeds) override {
        auto url = "http://issuer.example" + path;
        mWindows->pages[url] = deeds;
        return url;
    }
    std::string document(const std::vector<Deed>& deeds) override {
        mWindows->pages["document"] = deeds;
        return "document";
    }
    std::string nowhere() override { return "http://nowhere.example/"; }
    std::string shown() override { return mWindows->shown(); }
    void pressClose() override { mWindows->pressClose(); }
    void pressBack() override { mWindows->pressBack(); }
    void endPageProcess() override { mWindows->endPageProcess(); }

private:
    const std::shared_ptr<FakeWindows> mWindows = std::make_shared<FakeWindows>();
};

std::unique_ptr<WindowsDriver> makeDriver() { return std::make_unique<ScriptedDriver>(); }

INSTANTIATE_TEST_SUITE_P(Scripted, WindowsConformance, testing::Values(&makeDriver));
// Needs a real web view: tests/gtk runs it.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WebViewConformance);

}  // namespace
}  // namespace kavio::test
