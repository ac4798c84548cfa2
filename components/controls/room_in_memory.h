#pragma once

#include <cstddef>

namespace controls {

/**
 * Makes sure that so much memory is free before a document is changed: a document that runs out of memory
 * during a change is unusable, and its text is lost. \throws std::bad_alloc when it is not free, which
 * platform::errorNumberOf() reports as error 7.
 */
void mustHaveRoomFor(std::size_t bytes);

} // namespace controls
