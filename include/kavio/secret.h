#pragma once

#include <kavio/export.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace kavio {

/// A text, such as a card number, that is wiped from memory when it is destroyed. It is made from any text and reads as
/// one; copies made as `std::string` are the caller's to wipe. It deliberately cannot be printed.
class KAVIO_API SecretText {
public:
    SecretText() = default;
    /// A text that is moved in leaves nothing behind either.
    SecretText(std::string text) noexcept;
    ///@{
    /// Copies the text, which stays the caller's to wipe.
    SecretText(std::string_view text) : mText(text) {}
    SecretText(const char* text) : mText(text) {}
    ///@}
    SecretText(const SecretText&) = default;
    /// Leaves nothing behind.
    SecretText(SecretText&& other) noexcept : SecretText(std::move(other.mText)) {}
    /// Wipes what was there before.
    SecretText& operator=(SecretText other) noexcept {
        mText.swap(other.mText);
        return *this;
    }
    ~SecretText();

    /// The text, which is wiped with this object.
    const std::string& text() const { return mText; }
    /// The same.
    operator const std::string&() const { return mText; }
    bool operator==(const SecretText&) const = default;

private:
    std::string mText;
};

/// The same for a number, such as a security code.
class KAVIO_API SecretNumber {
public:
    /// Copies the number, which stays the caller's to wipe.
    SecretNumber(std::int64_t number = 0) : mNumber(number) {}
    SecretNumber(const SecretNumber&) = default;
    SecretNumber& operator=(const SecretNumber&) = default;
    ~SecretNumber();

    /// The number.
    operator std::int64_t() const { return mNumber; }

private:
    std::int64_t mNumber;
};

}  // namespace kavio
