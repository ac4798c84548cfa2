#pragma once

#include <cstddef>

namespace platform {

/**
 * Writes the path of the system-wide configuration directory, as a drive path with an ending NUL, into the
 * buffer of `size` characters and returns its length; 0 when the buffer is too small. The program learns the
 * directory once at start-up.
 */
std::size_t GetWindowsDirectoryA(char* buffer, std::size_t size);

} // namespace platform
