#pragma once

#include "message/read_message.h"

#include <cstddef>
#include <string_view>
#include <vector>

/** Most parts that are looked at, in a multipart body and in each alternative in it. */
inline constexpr int kMaximumParts = 20;

/**
 * The parts of a body, each from one boundary to the next, with its own headers: at most `most` of them.
 * What stands behind the last boundary is none.
 */
std::vector<std::string_view> partsOf(std::string_view body, std::string_view boundary, std::size_t most);

/**
 * Cuts the body at the message's boundary and returns its text and its attachments, which refer to the body.
 *
 * All searches are case-sensitive, and a boundary counts wherever it stands. A part ends with the "--" of the
 * next boundary line. A part without a Content-Type line has the type of the part before. Reading ends with
 * error 5 at a text or message/rfc822 part without a Content-Type line, at a type without a ";" behind it, at
 * an attachment without a name in quotes, and at an alternative whose boundary is not in quotes. It ends with
 * error 7 when there is no memory. Whatever was found before stays.
 */
ReadMessage readMultipart(std::string_view body, std::string_view boundary);
