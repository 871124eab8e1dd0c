#include "gtk/gtk_world.h"

#include <chrono>
#include <cstdlib>
#include <string>

namespace kavio::test {
namespace {

// What an issuer's page may look like that follows the desktop's style.
constexpr const char* challenge = R"(<!doctype html><meta name=viewport content="width=device-width">
<style>:root { color-scheme: light dark; font: 1rem sans-serif } main { max-width: 22rem; margin: 2rem auto; padding: 0 1rem }
input, button { font: inherit; padding: .6rem; margin: .4rem 0; width: 100%; box-sizing: border-box }</style>
<main><h2>Example Bank</h2><p>Enter the code that we have sent to your phone to store the card ending in 1111.</p>
<label>Code<input inputmode=numeric autofocus></label><button>Accept</button><button>Cancel</button></main>)";

/// Pictures of the scene for people to look at, in the folder that KAVIO_SCREENSHOTS names: scripts/screenshots.
class Looks : public GtkWorld {
protected:
    void take(const std::string& name) {
        const auto drawn = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        EXPECT_TRUE(until([=] { return std::chrono::steady_clock::now() > drawn; }));
        const auto width = std::to_string(gtk_widget_get_width(GTK_WIDGET(window())));
        const auto file = std::string(std::getenv("KAVIO_SCREENSHOTS")) + "/" + name + "-" + width + ".png";
        EXPECT_EQ(std::system(("import -window root " + file).c_str()), 0);
    }
    static void setStyle(bool isDark, int textPercent) {
        g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", isDark, "gtk-xft-dpi",
                     96 * 1024 * textPercent / 100, nullptr);
    }
};

TEST_F(Looks, ArePictured) {
    if (!std::getenv("KAVIO_SCREENSHOTS")) GTEST_SKIP() << "nobody asked for pictures";
    struct Style {
        std::string name;
        bool isDark;
        int textPercent;
    };
    for (const auto& [name, isDark, textPercent] :
         std::initializer_list<Style>{{"light", false, 100}, {"dark", true, 100}, {"large", false, 175}}) {
        setStyle(isDark, textPercent);
        renew();
        runHidden("<p>fingerprint");
        take("hidden-" + name);
        showPage(challenge);
        EXPECT_TRUE(until([&] { return shown() == "page"; }));
        take("challenge-" + name);
        scene->webView()->loadUrl(PageServer().url("/"), std::chrono::seconds(60));
        EXPECT_TRUE(until([&] { return shown() == "failed"; }));
        take("failed-" + name);
    }
    setStyle(false, 100);
}

}  // namespace
}  // namespace kavio::test
