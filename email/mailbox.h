#pragma once

#include "email/header_events.h"
#include "email/messages.h"

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace email {

/** What is known of the mailbox on the server, and the current message. */
struct Mailbox {
    MessageTable Messages;
    /** Fills the summaries from header lines. */
    HeaderEvents EventReader;
    /** The number of the message whose summary the POP3 events fill, and of the open message. */
    std::int16_t CurrentMessage = 0;

    std::int16_t MessageCount = 0;
    /** The message count at the end of the last retrieval; messages with higher numbers are new mail. */
    std::int16_t LastMessageCount = 0;
    /** The starts of the From lines that were listed since the log-on, the newest last; deletions take none
     * out. */
    std::deque<std::string> Senders;
    /** Bytes of the whole mailbox, as the server reports them. */
    std::int32_t MailboxBytes = 0;
    bool NewMailFound = false;
    /** Entry i is the number of the message in grid row i + 1. */
    std::vector<std::int16_t> MessageNumbers = std::vector<std::int16_t>(MessageTable::kSize);

    /** Cleared at start-up; nothing reads it. */
    std::array<std::int16_t, MessageTable::kSize> StartUpNumbers{};
};

/** Shared by all windows for the whole run, and used on the user-interface thread only. */
inline Mailbox mailbox;

} // namespace email
