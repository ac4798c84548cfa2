#pragma once

#include "platform/private_file.h"

#include <string>
#include <utility>

namespace support {

/** The first hundred bytes of a file that is held. */
inline std::string contentOf(platform::HeldFile file) {
    constexpr std::size_t enough = 100;
    platform::RegularInput input(std::move(file));
    std::string buffer(enough, '\0');
    return std::string(input.read(buffer));
}

} // namespace support
