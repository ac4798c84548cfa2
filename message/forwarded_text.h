#pragma once

#include "email/messages.h"

#include <string>

/**
 * The text of a forwarded message: its raw body as it was fetched, every part still encoded, and behind it
 * the raw header. The unequal lines of hyphens and the spelling "Foward" stay as they are, because members'
 * filters look for them.
 */
std::string forwardedText(const email::MessageSummary& message);
