#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace addresses {

/** How much of what was typed is looked for: bytes, and words in them. */
inline constexpr std::size_t mostTypedBytes = 256;
inline constexpr std::size_t mostTypedWords = 8;

/**
 * The filter (RFC 4515) for entries with an address that have each typed word as a part of a name, of the
 * address or of the user name. What was typed has no meaning in it but its letters. Empty where no word was
 * typed.
 */
std::string directoryFilter(std::string_view typed);

/** The distinguished name (RFC 4514) of the user of this name directly below the base. */
std::string userBelow(std::string_view base, std::string_view user);

} // namespace addresses
