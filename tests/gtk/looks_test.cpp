#include "gtk/enrolment_world.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace kavio::test {
namespace {

/// Pictures of the scene for people to look at, in the folder that KAVIO_SCREENSHOTS names: scripts/screenshots.
class Looks : public EnrolmentWorld {
protected:
    /// Of the scene once it shows `what`, on the course of a test card.
    void picture(const std::string& card, const std::string& what, const std::string& name) {
        sandbox.fault("/acs/fingerprint/*", {.status = 200, .body = "<p>goes on for ever"});
        enrol(card);
        EXPECT_TRUE(until([&] { return shown() == what; }));
        take(name);
        press("Escape");
        EXPECT_TRUE(until([&] { return shown() == "nothing"; }));
        sandbox.clearFaults();
    }
    void take(const std::string& name) {
        const auto drawn = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        EXPECT_TRUE(until([=] { return std::chrono::steady_clock::now() > drawn; }));
        const auto width = std::to_string(gtk_widget_get_width(GTK_WIDGET(window())));
        const auto file = (folder / (name + "-" + width + ".png")).string();
        EXPECT_EQ(std::system(("import -window root " + file).c_str()), 0);
    }
    std::filesystem::path folder;

    static void setStyle(bool isDark, int textPercent) {
        g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", isDark, "gtk-xft-dpi",
                     96 * 1024 * textPercent / 100, nullptr);
    }
};

TEST_F(Looks, ArePictured) {
    const char* wanted = std::getenv("KAVIO_SCREENSHOTS");
    if (!wanted) GTEST_SKIP() << "nobody asked for pictures";
    folder = wanted;
    struct Style {
        std::string name;
        bool isDark;
        int textPercent;
    };
    for (const auto& [name, isDark, textPercent] :
         std::initializer_list<Style>{{"light", false, 100}, {"dark", true, 100}, {"large", false, 175}}) {
        setStyle(isDark, textPercent);
        picture("4000000000001026", "working", "hidden-" + name);
        picture("4000000000001042", "page", "challenge-" + name);
        picture("4000000000001109", "failed", "failed-" + name);
    }
    setStyle(false, 100);
}

}  // namespace
}  // namespace kavio::test
