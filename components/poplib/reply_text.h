#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace poplib {

/** The two numbers of a STAT or LIST reply; further words are allowed and ignored. */
struct TwoNumbers {
    std::int64_t first = 0;
    std::int64_t second = 0;
};

/**
 * Reads the two numbers that a reply text starts with.
 * \throws RuntimeError 20302 when there are no two unsigned decimal numbers, 6 when one does not fit 32 bits.
 */
TwoNumbers twoNumbers(std::string_view text);

/** The number that a text starts with. Raises what twoNumbers() raises. */
std::int64_t leadingNumber(std::string_view text);

/** A message's number and what follows it in a line of the response to LIST. */
struct NumberedText {
    std::int32_t number = 0;
    std::string_view text;
};

/** Reads such a line; nothing for any other. Whether the text is a size, twoNumbers() tells. */
std::optional<NumberedText> numberedText(std::string_view line);

/** A message's number and its unique-id. */
struct UniqueId {
    std::int32_t number = 0;
    std::string_view text;
};

/**
 * Reads a line of a UIDL response: a number, a space and a unique-id. Returns nothing for any other line. The
 * id may hold any bytes, since it is only compared, but no more than the 70 of RFC 1939 section 7.
 */
std::optional<UniqueId> uniqueId(std::string_view line);

/** True when the text of an -ERR reply starts with a response code (RFC 2449 section 8). */
bool hasResponseCode(std::string_view text);

/**
 * Whether the text of an -ERR reply starts with this response code, given in capitals, or with one that says
 * more, as "[LOGIN-DELAY 900]" does.
 */
bool hasCode(std::string_view text, std::string_view known);

/** True for the response code [SYS/PERM]: no later attempt will succeed either (RFC 3206 section 4). */
bool isForGood(std::string_view text);

/**
 * True when a refused log-on means that the server takes no password in clear. There is no response code for
 * this: servers say it in words, some of them behind [AUTH].
 */
bool demandsEncryption(std::string_view text);

/**
 * True when the response code of an -ERR reply (RFC 2449 section 8, RFC 3206) says that a later attempt may
 * succeed: [IN-USE], [LOGIN-DELAY], [SYS/TEMP].
 */
bool mayBeTriedLater(std::string_view text);

} // namespace poplib
