#pragma once

#include "email/messages.h"

#include <string>
#include <string_view>

/**
 * The text of a forwarded message: its raw body as it was fetched, every part still encoded, and behind it
 * the raw header. The unequal lines of hyphens and the spelling "Foward" stay as they are, because members'
 * filters look for them.
 */
std::string forwardedText(const email::MessageSummary& message);

/** The same lines around a text that was decoded for reading. */
std::string forwardedText(std::string_view date, std::string_view from, std::string_view subject,
                          std::string_view text);
