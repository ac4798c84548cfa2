#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace platform {

/** Longest line that is taken for a password, in bytes. */
inline constexpr std::size_t kMaximumPasswordBytes = 4096;

/**
 * Reads one line from the descriptor, byte by byte, so that nothing behind it is taken, and returns it
 * without its line end. Nothing at the end of the input, for an empty line and for one that is too long.
 */
std::optional<std::string> readSecretLine(int descriptor);

/**
 * Asks for a password at the terminal behind the descriptor: writes the prompt to the standard error and
 * shows nothing of what is typed. The terminal is left as it was, also when a signal ends the program
 * meanwhile.
 */
std::optional<std::string> askForPassword(int terminal, const std::string& prompt);

} // namespace platform
