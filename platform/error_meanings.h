#pragma once

#include <string>

namespace platform {

/** Returns what the error of this number means and, if possible, what the user can do. */
std::string meaningOf(int errorNumber);

} // namespace platform
