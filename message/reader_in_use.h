#pragma once

#include "message/read_message.h"

/** Reads a message with the reader in use: the program's own, unless useReader() has set another. */
ReadMessage readMessage(const email::MessageSummary& message);

/** Sets the reader for all messages from here on. */
void useReader(MessageReader reader);
