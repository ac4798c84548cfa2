#pragma once

#include <cstddef>
#include <string_view>

namespace netcodelib {

/** The characters of base64 in the order of their values (RFC 2045 section 6.8, table 1). */
inline constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr char kPadding = '=';

/** So many bytes become so many characters. */
inline constexpr std::size_t kGroupBytes = 3;
inline constexpr std::size_t kGroupCharacters = 4;

} // namespace netcodelib
