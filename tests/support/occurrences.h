#pragma once

#include <cstddef>
#include <string_view>

namespace support {

/** How often the word stands in the text. */
inline std::size_t occurrences(std::string_view text, std::string_view word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

} // namespace support
