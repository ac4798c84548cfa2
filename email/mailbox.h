#pragma once

#include "email/header_events.h"
#include "email/messages.h"

#include <array>
#include <cstdint>

namespace email {

/** What is known of the mailbox on the server, and the message at hand. */
struct Mailbox {
    MessageTable Messages;
    /** Fills the summaries from header lines. */
    HeaderEvents headerEvents;
    /** The message that the POP3 events fill; also the open one. */
    std::int16_t CurrentMessage = 0;

    std::int16_t MessageCount = 0;
    /** The count at the end of the last retrieval; what lies above it is new mail. */
    std::int16_t LastMessageCount = 0;
    /** Bytes of the whole mailbox, as the server reports them. */
    std::int32_t MailboxBytes = 0;
    bool NewMailFound = false;
    /** Entry i is the number of the message in grid row i + 1. */
    std::array<std::int16_t, MessageTable::kSize> MessageNumbers{};

    /** Cleared at start-up; nothing reads it. */
    std::array<std::int16_t, MessageTable::kSize> StartUpNumbers{};
};

/** Shared by all windows for the whole run, and used on the user-interface thread only. */
inline Mailbox mailbox;

} // namespace email
