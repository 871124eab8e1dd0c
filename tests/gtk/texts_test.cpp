#include "platform/gtk/texts.h"

#include "gtk/gtk_world.h"

#include <kavio/testing/logged_scene.h>

#include <gmock/gmock.h>

#include <algorithm>

namespace kavio::test {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

/// Somebody who reads these languages, the best first.
class Reader final : public Locale {
public:
    explicit Reader(std::vector<std::string> languages) : mLanguages(std::move(languages)) {}
    std::optional<std::string> languageCode() const override { return std::nullopt; }
    std::vector<std::string> languages() const override { return mLanguages; }
    std::optional<std::string> regionName(std::string_view) const override { return std::nullopt; }

private:
    const std::vector<std::string> mLanguages;
};

Platform platformFor(std::vector<std::string> languages) {
    LinuxPlatformOptions options;
    options.localizedStrings = {{"Back", "Zum Laden zurück"}};
    auto platform = makeGtkPlatform(application(), std::move(options));
    platform.locale = std::make_shared<Reader>(std::move(languages));
    return platform;
}

TEST(SceneTexts, AreThereInEveryLanguage) {
    for (const auto& [tag, texts] : sceneLanguages().subspan(1)) {
        SCOPED_TRACE(tag);
        for (std::size_t i = 0; i < sceneKeys.size(); ++i) {
            EXPECT_THAT(texts[i], Not(IsEmpty())) << sceneKeys[i];
            EXPECT_EQ(std::ranges::count(texts, texts[i]), 1) << texts[i];
            EXPECT_EQ(std::ranges::count(sceneKeys, texts[i]), 0) << texts[i];
            EXPECT_EQ(texts[i].ends_with("…"), sceneKeys[i].ends_with("…")) << texts[i];
            EXPECT_EQ(texts[i].ends_with(".") || texts[i].ends_with("。"), sceneKeys[i].ends_with(".")) << texts[i];
            EXPECT_EQ(isRightToLeft(texts[i]), tag == "ar" || tag == "he") << texts[i];
        }
    }
}

TEST(SceneTexts, AreInTheLanguageThatThePersonReadsBestAndTheHostsOwnGoFirst) {
    const std::string english = "Your card is not stored yet.";
    const std::string german = "Ihre Karte ist noch nicht gespeichert.";
    const std::string brazilian = "Seu cartão ainda não foi salvo.";
    const std::string european = "O seu cartão ainda não foi guardado.";
    const std::string simplified = "您的银行卡尚未保存。";
    const std::string traditional = "您的卡片尚未儲存。";
    for (const auto& [languages, stored] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"ar-EG"}, "لم تُحفظ بطاقتك بعد."},
             {{"de-AT-1996"}, german},
             {{"en-US-u-va-posix", "de"}, english},  // the locale "C"
             {{"es-419"}, "Su tarjeta aún no se ha guardado."},
             {{"iw-IL"}, "הכרטיס שלך עדיין לא נשמר."},
             {{"ja-JP-u-ca-japanese"}, "カードはまだ登録されていません。"},
             {{"pt"}, brazilian},
             {{"pt-PT"}, european},
             {{"pt-AO"}, european},
             {{"zh"}, simplified},
             {{"zh-Hans-HK"}, simplified},
             {{"zh-TW"}, traditional},
             {{"zh-HK"}, traditional},
             {{"zh-Hant-TW"}, traditional},
             // No Serbian text, and nothing that whoever reads it in Latin letters is sure to read.
             {{"sr-Latn"}, english},
             {{"sr-Latn-RS", "de"}, german},
             {{"de-Cyrl"}, english},
             {{"eo", "fr-CA", "de"}, "Votre carte n’est pas encore enregistrée."},
             {{"-", "", "d", "a language with a name much too long", "de"}, german},
             {{"eo"}, english},
             {{}, english},
         }) {
        const InstalledPlatform installed(platformFor(languages));
        EXPECT_EQ(sceneText("Your card is not stored yet."), stored) << ::testing::PrintToString(languages);
        EXPECT_EQ(sceneText("Back"), "Zum Laden zurück");
    }
}

/// What belongs to the scene, all of it made visible.
void collect(GtkWidget* widget, std::vector<std::string>& texts, std::vector<GtkTextDirection>& directions) {
    directions.push_back(gtk_widget_get_direction(widget));
    if (GTK_IS_LABEL(widget)) texts.emplace_back(gtk_label_get_text(GTK_LABEL(widget)));
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
        if (!WEBKIT_IS_WEB_VIEW(child)) collect(child, texts, directions);
        gtk_widget_set_visible(child, TRUE);
    }
}

class WordsTest : public GtkHost {
protected:
    WordsTest() : GtkHost(UrlSessionConfiguration{}) {}
};

TEST_F(WordsTest, FillTheSceneInTheirOwnDirectionAndFitAPhoneInDoubledText) {
    g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", 2 * 96 * 1024, nullptr);
    for (const auto& language : sceneLanguages()) {
        SCOPED_TRACE(language.tag);
        const InstalledPlatform installed(platformFor({std::string(language.tag)}));
        const LoggedScene made(*Platform::current().windows);
        made.runHidden("<p>hidden");
        Platform::current().windows->keyWindow()->rootViewController()->present(made.scene, true);
        std::vector<std::string> texts;
        std::vector<GtkTextDirection> directions;
        collect(GTK_WIDGET(window()), texts, directions);
        const auto isForeign = language.tag != sceneLanguages().front().tag;
        for (const auto key : sceneKeys) EXPECT_FALSE(isForeign && std::ranges::count(texts, key) > 0) << key;
        const auto isReversed = isRightToLeft(language.texts.front());
        EXPECT_THAT(directions, ::testing::Each(isReversed ? GTK_TEXT_DIR_RTL : GTK_TEXT_DIR_LTR));

        GtkRequisition smallest{};
        gtk_widget_get_preferred_size(GTK_WIDGET(window()), &smallest, nullptr);
        EXPECT_LE(smallest.width, 360);
        // A cover higher than the page below it would reach beyond the screen.
        for (const auto* cover : {"workingPage", "failedPage"}) {
            gtk_widget_get_preferred_size(findIn(GTK_WIDGET(window()), cover), &smallest, nullptr);
            EXPECT_LE(smallest.height, 560) << cover;
        }
    }
    gtk_settings_reset_property(gtk_settings_get_default(), "gtk-xft-dpi");
}

}  // namespace
}  // namespace kavio::test
