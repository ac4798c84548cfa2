#pragma once

#include <cstddef>

namespace controls {

/**
 * Asks for that much memory before a document is changed: one that runs out of it in the middle of a change
 * is of no more use, and what is in it is lost. \throws std::bad_alloc, which every trap takes for error 7,
 * where it cannot be had.
 */
void mustHaveRoomFor(std::size_t bytes);

} // namespace controls
