#pragma once

#include <string>

namespace support {

/**
 * A message made up from everything that is known to be difficult: types with and without a semicolon, names
 * and boundaries with and without quotes, boundaries that begin another or are empty or very long, parts in
 * parts, keys in running text, a missing end, bytes of any kind. The same message for the same seed.
 */
std::string generatedMessage(unsigned seed);

} // namespace support
