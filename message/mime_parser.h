#pragma once

#include "email/messages.h"
#include "message/part_headers.h"

#include <functional>
#include <string_view>

/** Where the parser puts what it finds, while it finds it: what is there stays when a later part fails. */
struct MimeTarget {
    /** The readable text. It may hold something already, which stays in front. */
    StrippedText& text;
    /** Called for each attachment with its file name and the whole part; the last one is the one to keep. */
    std::function<void(std::string_view name, std::string_view part)> attachment;
};

/** Parts of a multipart body, and of one alternative in it, that are looked at. */
inline constexpr int kMaximumParts = 20;

/**
 * Cuts the body at the message's boundary and hands its text and its attachments over.
 *
 * All searches are case-sensitive, and a boundary counts wherever it stands. A part ends with the "--" of the
 * next boundary line. A part without a Content-Type line is taken for one of the type of the part before.
 * \throws RuntimeError 5 for a text part whose type was taken over, a type without a ";" behind it, and an
 * attachment whose name is not in quotes; and whatever the target throws.
 */
void parseMultipart(std::string_view body, std::string_view boundary, const MimeTarget& target);
