#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace addresses {

/** Longest address that is offered, in bytes (RFC 5321 section 4.5.3.1.3, without the angle brackets). */
inline constexpr std::size_t mostAddressBytes = 254;

/** Longest name that is shown, in letters as a person counts them. */
inline constexpr int mostNameLetters = 64;

/**
 * Whether the text is one address and nothing else, which the program takes as a recipient in the way of mail
 * that is in use (mailMode()): no name, no comment, no comma. UTF-8.
 */
bool canBeSentTo(std::string_view address);

/**
 * A name as it may stand in a list: UTF-8 on one line, without control characters and direction overrides,
 * with single blanks between words, at most mostNameLetters long. Bytes that are not UTF-8 are read as
 * everywhere in the program.
 */
std::string nameForShowing(std::string_view name);

} // namespace addresses
