#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

namespace kavio {

/// The scene's own texts, in English: the keys of their translations.
inline constexpr std::array<std::string_view, 11> sceneKeys{
    "Card check",
    "Close",
    "Close without adding the card",
    "Your card is being checked…",
    "One moment, please…",
    "The page of your card's bank can't be loaded.",
    "Your card is not stored yet.",
    "Back",
    "Try again",
    "Secure connection",
    "The connection is not secure",
};

/// The texts in the language of a BCP 47 tag, in the order of the keys.
struct SceneLanguage {
    std::string_view tag;
    std::array<std::string_view, sceneKeys.size()> texts;
};

/// Those that come with the library, English being the first.
std::span<const SceneLanguage> sceneLanguages();

/// One of the texts as the person should read it: in the host application's translation, or else in the first of the
/// person's languages that comes with the library, or else in English.
std::string sceneText(std::string_view key);

bool isRightToLeft(std::string_view text);

}  // namespace kavio
