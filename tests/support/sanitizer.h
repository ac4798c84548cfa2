#pragma once

namespace support {

/** Whether the sanitizers are built in, which make everything slower and keep freed memory for a while. */
inline constexpr bool kSanitized = BRINDLEWAKE_SANITIZED != 0;

/** So many, or a part of them where the sanitizers make each of them slow. */
template <class Number>
constexpr Number fewerIfSanitized(Number many, Number part) {
    return kSanitized ? many / part : many;
}

} // namespace support
