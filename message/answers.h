#pragma once

#include "email/messages.h"
#include "message/answered_message.h"
#include "message/letter.h"

#include <QString>

#include <string>
#include <string_view>

/** What the standard reader has made of the header of an opened message. Texts are UTF-8. */
struct DecodedMessage {
    /** Where answers go, as the To field takes it. */
    std::string answerTo;
    std::string from;
    std::string subject;
    std::string date;
    AnsweredMessage answered;
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

/** The program's own answer: to the sender, as the header has it. */
Answer answerTo(const email::MessageSummary& message);

/**
 * The answer to a message that was read as the standards have it. "RE: " is put before a subject that does
 * not begin with "Re:" yet, whatever the case of its letters.
 */
Answer answerTo(const DecodedMessage& message);

/** The program's own way of handing a message on: all of it as text (forwardedText()). */
Answer handingOn(const email::MessageSummary& message);

/** Hands on the text that was shown, between the same lines; with the whole message beside it where wanted.
 */
Answer handingOn(const DecodedMessage& message, std::string_view shownText, bool withOriginal);
