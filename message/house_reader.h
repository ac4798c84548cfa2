#pragma once

#include "message/read_message.h"

/**
 * Reads a message in the house's way: the body as it came where the header events have found no boundary,
 * unless the server says that the message has more than 32000 bytes; otherwise the text and the attachments
 * between the boundaries.
 */
ReadMessage readHouseMessage(const email::MessageSummary& message);
