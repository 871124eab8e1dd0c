#include "gtk/enrolling.h"

#include <unicode/locid.h>

#include <filesystem>

namespace kavio::test {
namespace {

/// Pictures of the scene for people to look at, in the folder that KAVIO_SCREENSHOTS names; see scripts/screenshots.
class Looks : public Enrolling {
protected:
    struct State {
        std::string name;
        std::string card;
        std::string shown;
        std::string host = {};  // of a page of our own instead of the card's
        bool hasInsecurePart = false;
    };
    struct Style {
        std::string name;
        bool isDark = false;
        int textPercent = 100;
        std::string language = "en";
    };

    void picture(const State& state, const Style& style) {
        SCOPED_TRACE(state.name + " " + style.name);
        sandbox.fault("/acs/fingerprint/*", {.status = 200, .body = "<p>goes on for ever"});
        if (!state.host.empty()) {
            const auto url = "http://" + state.host + ":" + server.port() + "/page";
            sandbox.fault("/account/locators/credorax/addCard",
                          {.status = 200, .body = R"({"type":3,"id":"I","url":")" + url + "\"}"});
        }
        enrol(state.card);
        EXPECT_TRUE(until([&] { return shown() == state.shown; }));
        if (state.hasInsecurePart) {
            const auto secure = text("security");
            runInPage("document.body.append(Object.assign(new Image(), {src: '" + server.url("/") + "'}))");
            EXPECT_TRUE(until([&] { return text("security") != secure; }));
        }
        take(state.name + "-" + style.name);
        press("Escape");
        EXPECT_TRUE(until([&] { return shown() == "nothing"; }));
        sandbox.clearFaults();
    }
    static void take(const std::string& name) {
        const auto drawn = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        EXPECT_TRUE(until([=] { return std::chrono::steady_clock::now() > drawn; }));
        const auto width = std::to_string(gtk_widget_get_width(GTK_WIDGET(window())));
        const auto scale = gtk_widget_get_scale_factor(GTK_WIDGET(window()));
        const auto file = name + "-" + width + (scale == 1 ? "" : "@" + std::to_string(scale)) + ".png";
        EXPECT_EQ(std::system(("import -window root " + (std::filesystem::path(folder) / file).string()).c_str()), 0);
    }
    static void wear(const Style& style) {
        g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", style.isDark, "gtk-xft-dpi",
                     96 * 1024 * style.textPercent / 100, nullptr);
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale::forLanguageTag(style.language, status), status);
    }

    inline static const char* const folder = std::getenv("KAVIO_SCREENSHOTS");
};

TEST_F(Looks, ArePictured) {
    if (!folder) GTEST_SKIP() << "nobody asked for pictures";
    server.servePage("/page", "<meta name=viewport content='width=device-width'><p>Enter the code from your phone.");
    const auto former = icu::Locale::getDefault();
    for (const auto& style :
         std::initializer_list<Style>{{"light"},
                                      {.name = "dark", .isDark = true},
                                      {.name = "doubled", .textPercent = 200},
                                      {.name = "german", .language = "de"},
                                      {.name = "german-doubled", .textPercent = 200, .language = "de"},
                                      {.name = "japanese", .language = "ja"},
                                      {.name = "arabic", .isDark = true, .language = "ar"}}) {
        wear(style);
        for (const auto& state : std::initializer_list<State>{
                 {"hidden", "4000000000001026", "working"},
                 {"challenge", "4000000000001042", "page"},
                 {.name = "insecure", .card = "4000000000001042", .shown = "page", .hasInsecurePart = true},
                 {"failed", "4000000000001109", "failed"},
                 {"long-host", "4000000000001042", "page",
                  "the.real.bank.example.and.a.long.name.that.hides.whose.it.is.attacker.example.localhost"},
                 {"foreign-host", "4000000000001042", "page", "xn--bcher-kva.localhost"},
             }) {
            picture(state, style);
        }
    }
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(former, status);
    wear({});
}

}  // namespace
}  // namespace kavio::test
