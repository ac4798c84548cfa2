#include "components/controls/room_in_memory.h"

#include <memory>

namespace controls {

void mustHaveRoomFor(std::size_t bytes) {
    const auto room = std::make_unique_for_overwrite<char[]>(bytes);
    // Otherwise the compiler may leave out an allocation that is not used.
    static_cast<volatile char&>(room[0]) = 0;
}

} // namespace controls
