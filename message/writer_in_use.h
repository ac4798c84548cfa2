#pragma once

#include "message/message_writer.h"

/** The writer of the way of mail that is in use (mailMode()). */
const MessageWriter& writerInUse();
