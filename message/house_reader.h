#pragma once

#include "message/read_message.h"

/**
 * The program's own reader. When the header events have found a boundary, it gives the text and the
 * attachments between the boundaries (readMultipart()). Otherwise it gives the body as it came, but no text
 * when the server says that the message has more than 32000 bytes.
 */
ReadMessage readHouseMessage(const email::MessageSummary& message);
