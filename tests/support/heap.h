#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
// GCC brings the function without its header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace support {

/** Bytes that are allocated now, by the main thread at least. */
inline std::size_t allocatedBytes() {
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace support
