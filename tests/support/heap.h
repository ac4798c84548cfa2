#pragma once

#include "tests/support/sanitizer.h"

#include <cstddef>
#include <malloc.h>

// Part of every program that is built with AddressSanitizer.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // NOLINT(bugprone-reserved-identifier)

namespace support {

/** Bytes that are allocated now, by the main thread at least. */
inline std::size_t allocatedBytes() {
    if constexpr (kSanitized) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace support
