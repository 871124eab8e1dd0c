#include "platform/linux/icu.h"
#include "platform/linux/icu_text.h"

#include <unicode/brkiter.h>

#include <algorithm>
#include <mutex>

namespace kavio {
namespace {

/// Whether each byte is a character by itself; only the last one may have a combining character after it.
bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80 && byte != '\r'; });
}

class IcuCharacters final : public Characters {
public:
    std::string_view prefix(std::string_view text, std::size_t count) const override {
        if (text.size() <= count) return text;
        if (isPlain(text.substr(0, count + 1))) return text.substr(0, count);

        UErrorCode status = U_ZERO_ERROR;
        UText utf8 = UTEXT_INITIALIZER;
        utext_openUTF8(&utf8, text.data(), static_cast<std::int64_t>(text.size()), &status);
        expectMemory(status);
        const std::lock_guard lock(mMutex);
        mBoundaries->setText(&utf8, status);
        mBoundaries->first();
        const auto end = mBoundaries->next(static_cast<std::int32_t>(std::min<std::size_t>(count, INT32_MAX)));
        utext_close(&utf8);
        expectMemory(status);
        return end == icu::BreakIterator::DONE ? text : text.substr(0, static_cast<std::size_t>(end));
    }

    std::string wellFormed(std::string_view text) const override {
        return isPlain(text) ? std::string(text) : fromIcu(toIcu(text));
    }

private:
    static std::unique_ptr<icu::BreakIterator> makeBoundaries() {
        UErrorCode status = U_ZERO_ERROR;
        auto* const made = icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status);
        return owned(made, status);
    }

    mutable std::mutex mMutex;
    std::unique_ptr<icu::BreakIterator> mBoundaries = makeBoundaries();
};

}  // namespace

std::shared_ptr<Characters> makeIcuCharacters() { return std::make_shared<IcuCharacters>(); }

}  // namespace kavio
