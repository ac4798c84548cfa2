#pragma once

#include <cstdint>
#include <string_view>

namespace POPLib {

/** The two numbers of a STAT or LIST answer; further words are allowed and ignored. */
struct TwoNumbers {
    std::int64_t first = 0;
    std::int64_t second = 0;
};

/**
 * Reads the two numbers that a reply text starts with.
 * \throws RuntimeError 20302 when there are no two unsigned decimal numbers, 6 when one has no end.
 */
TwoNumbers twoNumbers(std::string_view text);

/**
 * True when the response code of an -ERR answer (RFC 2449 section 8, RFC 3206) says that a later attempt may
 * succeed: [IN-USE], [LOGIN-DELAY], [SYS/TEMP].
 */
bool mayBeTriedLater(std::string_view text);

} // namespace POPLib
