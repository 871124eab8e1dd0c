#include "platform/wipe.h"

#include <kavio/secret.h>

namespace kavio {

void wipe(void* bytes, std::size_t size) noexcept {
    auto* byte = static_cast<volatile char*>(bytes);
    for (; size > 0; --size) *byte++ = 0;
}

void wipe(std::string& text) noexcept {
    text.resize(text.capacity());  // also what an earlier, longer text has left; allocates nothing
    wipe(text.data(), text.size());
    text.clear();
}

// A short text lies within the string itself, and moving leaves it there.
SecretText::SecretText(std::string text) noexcept {
    mText.swap(text);
    wipe(text);
}

SecretText::~SecretText() { wipe(mText); }

SecretNumber::~SecretNumber() { wipe(&mNumber, sizeof mNumber); }

}  // namespace kavio
