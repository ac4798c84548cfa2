#pragma once

namespace support {

/** Whether the sanitizers are built in, which make everything slower and keep freed memory for a while. */
inline constexpr bool kSanitized = BRINDLEWAKE_SANITIZED != 0;

} // namespace support
