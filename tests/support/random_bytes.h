#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace support {

/** The same bytes for the same seed. */
inline std::string randomBytes(std::size_t length, unsigned seed) {
    std::mt19937 generator(seed);
    std::string bytes(length, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(generator() & 0xFFU);
    }
    return bytes;
}

} // namespace support
