#include "tests/support/places.h"

#include <cstddef>

namespace support {

std::string buildFolder() {
    return BRINDLEWAKE_TEST_BUILD;
}

std::filesystem::path folderForServers() {
    // A socket's path has 108 bytes, a server's own names included.
    constexpr std::size_t longest = 64;
    const std::string build = buildFolder();
    const bool usable = build.size() <= longest && build.find(' ') == std::string::npos;
    return usable ? std::filesystem::path(build) : std::filesystem::temp_directory_path();
}

std::string dataFolder() {
    return BRINDLEWAKE_TEST_DATA;
}

} // namespace support
