#pragma once

#include <filesystem>
#include <string>

namespace support {

/** The folder of the build, in which tests make what they need. */
std::string buildFolder();

/** The folder of the build, or the system's where that one's path would be too long for a socket's or need
 * quoting. */
std::filesystem::path folderForServers();

/** The folder of the recorded dialogues. */
std::string dataFolder();

} // namespace support
