#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace support {

/** The unfolded value of the first field of this name in a header; empty when there is none. */
inline std::string field(std::string_view header, std::string_view name) {
    const std::string lines = "\r\n" + std::string(header);
    const std::size_t start = lines.find("\r\n" + std::string(name) + ": ");
    if (start == std::string::npos) {
        return {};
    }
    std::string value;
    for (std::size_t at = start + name.size() + 4; at < lines.size();) {
        const std::size_t end = std::min(lines.find("\r\n", at), lines.size());
        value += lines.substr(at, end - at);
        at = end + 2;
        if (at >= lines.size() || (lines[at] != ' ' && lines[at] != '\t')) {
            break;
        }
    }
    return value;
}

} // namespace support
