#include "gtk/gtk_world.h"

#include <kavio/testing/conformance/queues.h>
#include <kavio/testing/conformance/windows.h>
#include <kavio/testing/raw_server.h>

namespace kavio::test {
namespace {

std::string script(const Deed& deed) {
    const auto url = "'" + deed.url + "'";
    switch (deed.kind) {
        case Deed::Kind::GO:
            return "location = " + url;
        case Deed::Kind::FRAME:
            return "frame(" + url + ")";
        case Deed::Kind::FRAMES_FOR_EVER:
            return "setInterval(() => frame(" + url + "))";
        case Deed::Kind::OPEN:
            return "open(" + url + ")";
    }
    return "";
}

// One after the other, since a page that is on its way to another one does nothing more.
std::string html(const std::vector<Deed>& deeds) {
    std::string text =
        "<body><script>function frame(url) { const made = document.createElement('iframe'); made.src = url; "
        "document.body.append(made) }";
    for (std::size_t i = 0; i < deeds.size(); ++i) {
        text += " setTimeout(() => { " + script(deeds[i]) + " }, " + std::to_string(i * 50) + ");";
    }
    return text + "</script>";
}

class GtkDriver final : public WebViewDriver {
public:
    std::shared_ptr<Windows> windows() override { return Platform::current().windows; }
    bool runUntil(const std::function<bool()>& done) override { return GtkWorld::until(done); }
    std::string serve(const std::string& path, const std::vector<Deed>& deeds) override {
        return serveHtml(path, html(deeds));
    }
    std::string document(const std::vector<Deed>& deeds) override { return html(deeds); }
    std::string nowhere() override { return PageServer().url("/"); }
    std::string shown() override { return GtkWorld::shown(); }
    void pressClose() override { GtkWorld::click("close"); }
    void pressBack() override { GtkWorld::click("back"); }
    void endPageProcess() override { GtkWorld::endWebProcess(); }

    std::string serveHtml(const std::string& path, const std::string& html) override {
        mWorld.server.servePage(path, html);
        return mWorld.server.url(path);
    }
    std::string serveRedirect(const std::string& path, const std::string& location, int status) override {
        mWorld.server.serveRedirect(path, location, status);
        return mWorld.server.url(path);
    }
    std::string serveSecurely(const std::string& html) override {
        mServers.push_back(std::make_unique<RawServer>(
            applicationAuthority().issue({"localhost"}),
            answering(httpReply(200, html, "Content-Type: text/html\r\nConnection: close\r\n"))));
        return "https://localhost" + mServers.back()->address().substr(std::string("127.0.0.1").size()) + "/";
    }
    std::vector<std::string> secureRequests() override { return mServers.back()->requests(); }
    std::string bar() override { return GtkWorld::text("host") + ", " + GtkWorld::text("security"); }
    void pressKey(const std::string& key) override { GtkWorld::press(key); }

private:
    GtkWorld mWorld{trustingTheApplicationAuthority()};
    std::vector<std::unique_ptr<RawServer>> mServers;
};

template <class Driver>
std::unique_ptr<Driver> makeDriver() {
    return std::make_unique<GtkDriver>();
}

const Port gtkPort{
    .name = "Gtk",
    .start =
        [](const std::filesystem::path& folder) {
            LinuxPlatformOptions options;
            options.storeDirectory = folder;
            return std::make_shared<Platform>(makeGtkPlatform(application(), std::move(options)));
        },
    .runUntil = [](Platform&, const std::function<bool()>& done) { return GtkWorld::until(done); },
};

INSTANTIATE_TEST_SUITE_P(Gtk, MainQueueConformance, testing::Values(gtkPort));
INSTANTIATE_TEST_SUITE_P(Gtk, WindowsConformance, testing::Values(&makeDriver<WindowsDriver>));
INSTANTIATE_TEST_SUITE_P(Gtk, WebViewConformance, testing::Values(&makeDriver<WebViewDriver>));

}  // namespace
}  // namespace kavio::test
