#pragma once

#include "email/messages.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** An attachment that a reader has found. */
struct FoundAttachment {
    /** The file name that the message gives; any bytes. */
    std::string name;
    /** The part that the attachment is in, with its own headers. It lies in the message that was read. */
    std::string_view part;
};

/** What a reader has made of a message. */
struct ReadMessage {
    /** The text to be shown, as bytes; nothing for a message that cannot be shown at all. */
    std::optional<std::string> text;
    /** In the order of the message; the last one is the one that can be saved. */
    std::vector<FoundAttachment> attachments;
    /** The number of the error that ended the reading; 0 for none. What was found before it stays. */
    int error = 0;
};

/**
 * A function that reads a message, fetched whole with its header as it came, and returns what to show. It
 * raises nothing. What it returns may refer to the message.
 */
using MessageReader = ReadMessage (*)(const email::MessageSummary& message);
