#include "platform/gtk/texts.h"

#include <kavio/platform/platform.h>

#include <unicode/localematcher.h>
#include <unicode/ubidi.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace kavio {
namespace {

// English first, for want of a better one. A title that may have to be broken says where (\u00ad).
constexpr SceneLanguage languages[]{
    {"en", sceneKeys},
    {"ar",
     {
         "التحقق من البطاقة",
         "إغلاق",
         "إغلاق دون إضافة البطاقة",
         "جارٍ التحقق من بطاقتك…",
         "لحظة من فضلك…",
         "تعذّر تحميل صفحة البنك المُصدِر لبطاقتك.",
         "لم تُحفظ بطاقتك بعد.",
         "رجوع",
         "إعادة المحاولة",
         "اتصال آمن",
         "الاتصال غير آمن",
     }},
    {"de",
     {
         "Karten\u00adprüfung",
         "Schließen",
         "Schließen, ohne die Karte hinzuzufügen",
         "Ihre Karte wird geprüft …",
         "Einen Moment bitte …",
         "Die Seite Ihrer Bank kann nicht geladen werden.",
         "Ihre Karte ist noch nicht gespeichert.",
         "Zurück",
         "Erneut versuchen",
         "Sichere Verbindung",
         "Die Verbindung ist nicht sicher",
     }},
    {"es",
     {
         "Verifi\u00adcación de la tarjeta",
         "Cerrar",
         "Cerrar sin añadir la tarjeta",
         "Estamos verificando su tarjeta…",
         "Un momento, por favor…",
         "No se puede cargar la página de su banco.",
         "Su tarjeta aún no se ha guardado.",
         "Volver",
         "Reintentar",
         "Conexión segura",
         "La conexión no es segura",
     }},
    {"fr",
     {
         "Vérifi\u00adcation de la carte",
         "Fermer",
         "Fermer sans ajouter la carte",
         "Vérification de votre carte en cours…",
         "Veuillez patienter…",
         "Impossible de charger la page de votre banque.",
         "Votre carte n’est pas encore enregistrée.",
         "Retour",
         "Réessayer",
         "Connexion sécurisée",
         "La connexion n’est pas sécurisée",
     }},
    {"he",
     {
         "אימות הכרטיס",
         "סגירה",
         "סגירה ללא הוספת הכרטיס",
         "הכרטיס שלך נבדק…",
         "נא להמתין…",
         "לא ניתן לטעון את הדף של הבנק שלך.",
         "הכרטיס שלך עדיין לא נשמר.",
         "חזרה",
         "ניסיון נוסף",
         "חיבור מאובטח",
         "החיבור אינו מאובטח",
     }},
    {"it",
     {
         "Verifica della carta",
         "Chiudi",
         "Chiudi senza aggiungere la carta",
         "Stiamo verificando la carta…",
         "Attendere…",
         "Impossibile caricare la pagina della banca.",
         "La carta non è ancora stata salvata.",
         "Indietro",
         "Riprova",
         "Connessione sicura",
         "La connessione non è sicura",
     }},
    {"ja",
     {
         "カードの確認",
         "閉じる",
         "カードを追加せずに閉じる",
         "カードを確認しています…",
         "しばらくお待ちください…",
         "カード会社のページを読み込めません。",
         "カードはまだ登録されていません。",
         "戻る",
         "再試行",
         "安全な接続",
         "この接続は安全ではありません",
     }},
    {"nl",
     {
         "Kaart\u00adcontrole",
         "Sluiten",
         "Sluiten zonder de kaart toe te voegen",
         "Uw kaart wordt gecontroleerd…",
         "Een ogenblik geduld…",
         "De pagina van uw bank kan niet worden geladen.",
         "Uw kaart is nog niet opgeslagen.",
         "Terug",
         "Opnieuw proberen",
         "Beveiligde verbinding",
         "De verbinding is niet beveiligd",
     }},
    {"pl",
     {
         "Weryfi\u00adkacja karty",
         "Zamknij",
         "Zamknij bez dodawania karty",
         "Trwa weryfikacja karty…",
         "Proszę czekać…",
         "Nie można wczytać strony banku.",
         "Karta nie została jeszcze zapisana.",
         "Wstecz",
         "Spróbuj ponownie",
         "Bezpieczne połączenie",
         "Połączenie nie jest bezpieczne",
     }},
    {"pt-BR",
     {
         "Verifi\u00adcação do cartão",
         "Fechar",
         "Fechar sem adicionar o cartão",
         "Seu cartão está sendo verificado…",
         "Um momento, por favor…",
         "Não foi possível carregar a página do seu banco.",
         "Seu cartão ainda não foi salvo.",
         "Voltar",
         "Tentar novamente",
         "Conexão segura",
         "A conexão não é segura",
     }},
    {"pt-PT",
     {
         "Verifi\u00adcação do cartão",
         "Fechar",
         "Fechar sem adicionar o cartão",
         "O seu cartão está a ser verificado…",
         "Um momento, por favor…",
         "Não é possível carregar a página do seu banco.",
         "O seu cartão ainda não foi guardado.",
         "Voltar",
         "Tentar novamente",
         "Ligação segura",
         "A ligação não é segura",
     }},
    {"tr",
     {
         "Kart doğru\u00adlama",
         "Kapat",
         "Kartı eklemeden kapat",
         "Kartınız doğrulanıyor…",
         "Lütfen bekleyin…",
         "Bankanızın sayfası yüklenemiyor.",
         "Kartınız henüz kaydedilmedi.",
         "Geri",
         "Tekrar dene",
         "Güvenli bağlantı",
         "Bağlantı güvenli değil",
     }},
    {"zh-Hans",
     {
         "银行卡验证",
         "关闭",
         "关闭，不添加银行卡",
         "正在验证您的银行卡…",
         "请稍候…",
         "无法加载发卡银行的页面。",
         "您的银行卡尚未保存。",
         "返回",
         "重试",
         "安全连接",
         "连接不安全",
     }},
    {"zh-Hant",
     {
         "卡片驗證",
         "關閉",
         "關閉，不新增卡片",
         "正在驗證您的卡片…",
         "請稍候…",
         "無法載入發卡銀行的頁面。",
         "您的卡片尚未儲存。",
         "返回",
         "重試",
         "安全連線",
         "連線不安全",
     }},
};

std::optional<icu::Locale> localeOf(std::string_view tag) {
    UErrorCode status = U_ZERO_ERROR;
    auto locale = icu::Locale::forLanguageTag({tag.data(), static_cast<std::int32_t>(tag.size())}, status);
    if (U_FAILURE(status) || locale.isBogus()) return std::nullopt;
    return locale;
}

icu::LocaleMatcher makeMatcher() {
    icu::LocaleMatcher::Builder builder;
    builder.setNoDefaultLocale();
    for (const auto& language : languages) builder.addSupportedLocale(*localeOf(language.tag));
    UErrorCode status = U_ZERO_ERROR;
    return builder.build(status);
}

// Unicode's data decide: they know that Angola writes as Portugal does, and Hong Kong as Taiwan.
const SceneLanguage& personsLanguage() {
    static const icu::LocaleMatcher matcher = makeMatcher();
    std::vector<icu::Locale> wanted;
    for (const auto& tag : Platform::current().locale->languages()) {
        if (auto locale = localeOf(tag)) wanted.push_back(std::move(*locale));
    }
    icu::Locale::RangeIterator iterator(wanted.begin(), wanted.end());
    UErrorCode status = U_ZERO_ERROR;
    const auto found = matcher.getBestMatchResult(iterator, status).getSupportedIndex();
    return languages[std::max(found, 0)];
}

}  // namespace

std::span<const SceneLanguage> sceneLanguages() { return languages; }

std::string sceneText(std::string_view key) {
    auto hosts = Platform::current().mainBundle->localizedString(key);
    const auto* position = std::ranges::find(sceneKeys, key);
    if (hosts != key || position == sceneKeys.end()) return hosts;
    return std::string(personsLanguage().texts[static_cast<std::size_t>(position - sceneKeys.begin())]);
}

bool isRightToLeft(std::string_view text) {
    const auto utf16 = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    return ubidi_getBaseDirection(utf16.getBuffer(), utf16.length()) == UBIDI_RTL;
}

}  // namespace kavio
