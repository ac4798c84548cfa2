#pragma once

#include "email/messages.h"
#include "message/answered_message.h"
#include "message/letter.h"

#include <QString>

#include <functional>
#include <string>

/** An opened message, as Reply and Forward take it. */
struct OpenedMessage {
    /** Its fields are decoded where the standard reader has read it. */
    const email::MessageSummary& summary;
    /** Where answers go, as the To field takes it; only in the standard way. */
    const std::string& answerTo;
    const AnsweredMessage& answered;
    /** Returns the text as it is shown. */
    std::function<std::string()> shownText;
};

/** What Reply or Forward puts into the compose window. */
struct Answer {
    /** Empty for a message that is handed on. */
    std::string to;
    /** Stands before the subject. */
    QString prefix;
    std::string subject;
    std::string text;
    LetterOrigin origin = {};
};

/**
 * The answer to a message. The house's goes to the sender, as the header has it. In the standard way it names
 * the messages before it, and "RE: " is not put before a subject that begins with "Re:", whatever the case of
 * its letters.
 */
Answer answerTo(const OpenedMessage& message);

/**
 * Hands a message on: in the house's way all of it as text (forwardedText()), in the standard way the text
 * that is shown, between the same lines, with the whole message beside it where that is wanted.
 */
Answer handingOn(const OpenedMessage& message, bool withOriginal);
