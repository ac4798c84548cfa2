#pragma once

#include "message/read_message.h"

/** Reads a message in the way that is in use: the house's, unless useReader() has named another. */
ReadMessage readMessage(const email::MessageSummary& message);

/** Lets every message be read in this way from here on. */
void useReader(MessageReader reader);
