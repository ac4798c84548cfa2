#pragma once

// What opening a message has to come to, written down as plainly as it can be said: whole copies of texts,
// positions that count from 1, no memory of earlier searches. Slow, and meant to be compared with.

#include "email/messages.h"
#include "tests/support/opened_message.h"

#include <string>
#include <string_view>

namespace support::reference {

/** Adds one header line to the summary. \throws RuntimeError 5, as email::HeaderEvents does. */
void addHeaderLine(email::MessageSummary& summary, const std::string& field, const std::string& value);

/** The text after one pass of the part-header stripper. */
std::string strippedOnce(std::string text);

/** What support::opened() has to give for this message, whatever the pieces. */
OpenedMessage opened(std::string_view message);

/** What an attachment's file has to be decoded to. */
DecodedAttachment decoded(DecodedAttachment attachment);

} // namespace support::reference
