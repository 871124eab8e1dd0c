#pragma once

#include "gtk/page_server.h"
#include "support/certificates.h"
#include "support/fakes/fake_device.h"
#include "support/temporary_folder.h"

#include <kavio/platform/linux.h>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kavio::test {

/// What a scene told its controller.
struct SceneLog final : SceneObserver {
    void onViewEvent(ViewEvent event) override { events.push_back(event); }
    bool shouldStartLoad(const std::optional<std::string>& url) override {
        urls.push_back(url.value_or("none"));
        if (onLoad) onLoad(urls.back());
        return true;
    }
    void onButtonClick() override {
        ++closes;
        if (onClose) onClose();
    }
    /// The addresses of this device among `urls`.
    std::vector<std::string> loopbacks() const;

    std::vector<ViewEvent> events;
    std::vector<std::string> urls;
    int closes = 0;
    std::function<void(const std::string&)> onLoad;
    std::function<void()> onClose;
};

/// A GTK program with one window, and a person in front of it: the real web view on a real X server.
class GtkHost : public testing::Test {
protected:
    explicit GtkHost(UrlSessionConfiguration session);
    ~GtkHost() override;

    /// Runs the main loop until `condition` holds; false when that takes too long.
    static bool until(const std::function<bool()>& condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(20));
    /// What the scene shows: "working", "page" or "failed"; "nothing" when there is none.
    static std::string shown();
    /// The text of one of the scene's labels or buttons; empty when it is not in sight.
    static std::string text(const char* widget);
    static GtkWindow* window() { return GTK_WINDOW(find("TDSecureScene")); }
    static std::size_t windowCount();
    static void endWebProcess();
    /// Runs `script` in the page that is shown, once it is there as a whole.
    static void runInPage(const std::string& script);
    /// The person at the screen.
    static void click(const char* widget);
    static void press(const std::string& key);

    PageServer server;

private:
    static GtkWidget* find(std::string_view id);

    const TemporaryFolder mStore;
    const InstalledPlatform mPlatform;

protected:
    GtkWindow* host;
};

/// With a scene above the window.
class GtkWorld : public GtkHost {
protected:
    GtkWorld();
    ~GtkWorld() override;

    void present();
    void showPage(const std::string& html);
    void runHidden(const std::string& html);
    /// Goes on with a new scene.
    void renew();

    /// One that the host trusts.
    static const CertificateAuthority& authority();

    std::shared_ptr<WebScene> scene;
    std::shared_ptr<SceneLog> log = std::make_shared<SceneLog>();
};

}  // namespace kavio::test
