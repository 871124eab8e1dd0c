#pragma once

#include "gtk/page_server.h"
#include "support/certificates.h"
#include "support/temporary_folder.h"

#include <kavio/platform/platform.h>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

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

/// A GTK program with one window, a scene above it, and a person in front of it: the real web view on a real X server.
class GtkWorld : public testing::Test {
protected:
    GtkWorld();
    ~GtkWorld() override;

    void present();
    void showPage(const std::string& html);
    void runHidden(const std::string& html);

    /// Goes on with a new scene.
    void renew();

    /// Runs the main loop until `condition` holds; false when that takes too long.
    static bool until(const std::function<bool()>& condition);
    /// What the scene shows: "working", "page" or "failed"; "nothing" when it is gone.
    std::string shown() const;
    /// The text of one of the scene's labels or buttons; empty when it is not in sight.
    std::string text(const char* widget) const;
    GtkWindow* window() const { return GTK_WINDOW(find("TDSecureScene")); }
    static std::size_t windowCount();
    static void endWebProcess();
    /// The person at the screen.
    void click(const char* widget) const;
    void press(const std::string& key) const;

    /// One that the host trusts.
    static const CertificateAuthority& authority();

    PageServer server;
    GtkWindow* host;
    std::shared_ptr<WebScene> scene;
    std::shared_ptr<SceneLog> log = std::make_shared<SceneLog>();

private:
    static GtkWidget* find(std::string_view id);
};

}  // namespace kavio::test
