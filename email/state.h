#pragma once

#include "email/header_events.h"
#include "email/messages.h"
#include "email/settings.h"

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

/** What all windows share. It lives for the whole run and only on the user-interface thread. */
namespace email {

/** The two mail servers. */
struct Servers {
    QString POPServer;
    QString SMTPServer;
};

/** What is known of the mailbox, the person, and the message at hand. */
struct State {
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

    /** Whether the server has taken the name and the password once in this run. */
    bool LoggedOn = false;
    /** Kept from the log-on for every later session. */
    QString UserName;
    QString Password;
    /** What the settings file names, once a host typed at the log-on stands in the settings in its place. */
    std::optional<Servers> FileServers;

    /**
     * What start-up titles the windows with; null until all settings are read, and then windows keep the
     * titles that they are made with.
     */
    QString WindowTitle;

    /** File name of the attachment that the message window offers to save. */
    std::string CurrentAttachment;

    /** Drive path of the folder from which a file was attached the last time; empty before the first. */
    QString AttachFolder;

    /** True only while a whole message is fetched: body lines then move the progress bar. */
    bool Retrieving = false;
};

inline Settings settings;
inline DerivedValues derived;
inline State state;

} // namespace email
