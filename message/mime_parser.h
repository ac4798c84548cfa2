#pragma once

#include "message/read_message.h"

#include <string_view>

/** Parts of a multipart body, and of one alternative in it, that are looked at. */
inline constexpr int kMaximumParts = 20;

/**
 * Cuts the body at the message's boundary and returns its text and its attachments, which refer to the body.
 *
 * All searches are case-sensitive, and a boundary counts wherever it stands. A part ends with the "--" of the
 * next boundary line. A part without a Content-Type line is taken for one of the type of the part before.
 * Error 5 ends it at a text part whose type was taken over, a type without a ";" behind it, and an attachment
 * whose name is not in quotes; 7 where memory fails.
 */
ReadMessage readMultipart(std::string_view body, std::string_view boundary);
