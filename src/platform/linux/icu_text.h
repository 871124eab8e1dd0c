#pragma once

#include <unicode/unistr.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace kavio {

/// ICU returns null, or a status, where it has no memory; that must not look like an answer.
inline void expectMemory(UErrorCode status) {
    if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
}
template <class T>
std::unique_ptr<T> owned(T* made, UErrorCode status = U_ZERO_ERROR) {
    std::unique_ptr<T> owner(made);
    expectMemory(status);
    if (!owner) throw std::bad_alloc();
    return owner;
}

/// Ill-formed bytes become U+FFFD.
inline icu::UnicodeString toIcu(std::string_view text) {
    auto converted = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    if (converted.isBogus()) throw std::bad_alloc();
    return converted;
}

inline std::string fromIcu(const icu::UnicodeString& text) {
    if (text.isBogus()) throw std::bad_alloc();
    std::string utf8;
    return text.toUTF8String(utf8);
}

}  // namespace kavio
