#pragma once

#include "email/messages.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/** An attachment as it was found, and what saving it comes to. */
struct DecodedAttachment {
    std::string name;
    /** The part without its header lines, as it goes to the attachment's file. */
    std::string encoded;
    /** The decoded file; empty when decoding fails. */
    std::string content;
    /** The number of the error that decoding ends with; 0 when it ends well. */
    int error = 0;

    bool operator==(const DecodedAttachment&) const = default;
};

/** What is known of a message when it has been opened, or when opening it has failed. */
struct OpenedMessage {
    email::MessageSummary summary;
    /** The text of a message with a boundary. */
    std::string text;
    /** All attachments in the order in which they were found. */
    std::vector<DecodedAttachment> attachments;
    /** The number of the error that opening ends with; 0 when it ends well. */
    int error = 0;
};

/** The first thing in which the two differ, in words; empty when they are the same. */
std::string differenceBetween(const OpenedMessage& left, const OpenedMessage& right);

/**
 * Takes a raw message through all that the program does with it without a window: the POP3 session, the
 * summary, the parser, the stripper and the decoder. The session gets the server's bytes, and the decoder the
 * encoded text, in pieces of so many bytes. A message that does not end in CR LF gets one.
 */
OpenedMessage opened(std::string_view message, std::size_t pieceBytes);

/** The same without the attachments' content: for messages whose parts are many. */
OpenedMessage openedWithoutDecoding(std::string_view message);

/** The file that this encoded text is decoded to, the text coming in pieces of so many bytes. */
DecodedAttachment decoded(DecodedAttachment attachment, std::size_t pieceBytes);

} // namespace support
