#include "platform/windows_directory.h"

#include <algorithm>
#include <string_view>

namespace platform {

std::size_t GetWindowsDirectoryA(char* buffer, std::size_t size) {
    // Z: is the root of the file system.
    constexpr std::string_view path = "Z:\\etc";
    if (size <= path.size()) {
        return 0;
    }
    *std::copy(path.begin(), path.end(), buffer) = '\0';
    return path.size();
}

} // namespace platform
