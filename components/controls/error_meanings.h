#pragma once

#include <string>

namespace controls {

/** Returns what the error of this number means and, where one can, what to do. */
std::string meaningOf(int errorNumber);

} // namespace controls
