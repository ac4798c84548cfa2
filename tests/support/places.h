#pragma once

#include <string>

namespace support {

/** The folder of the build, in which tests make what they need. */
std::string buildFolder();

/** The folder of the recorded dialogues. */
std::string dataFolder();

} // namespace support
