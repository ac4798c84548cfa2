#pragma once

#include <optional>
#include <string_view>

namespace standard {

/** The value of a hexadecimal digit of either case; nothing for any other character. */
constexpr std::optional<unsigned> valueOfDigit(char digit) noexcept {
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    const auto letter = static_cast<unsigned char>(static_cast<unsigned char>(digit) | 0x20U);
    return letter >= 'a' && letter <= 'f' ? std::optional(letter - 'a' + 10U) : std::nullopt;
}

/** The byte that the two digits at the start of the text stand for. */
constexpr std::optional<char> byteOfDigits(std::string_view text) noexcept {
    if (text.size() < 2) {
        return std::nullopt;
    }
    const auto high = valueOfDigit(text[0]);
    const auto low = valueOfDigit(text[1]);
    return high && low ? std::optional(static_cast<char>(*high * 16U + *low)) : std::nullopt;
}

} // namespace standard
