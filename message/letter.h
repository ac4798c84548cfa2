#pragma once

#include "message/answered_message.h"

#include <QString>

#include <memory>
#include <string>
#include <vector>

/** What a letter takes along from the message that it answers or hands on. */
struct LetterOrigin {
    /** For In-Reply-To; empty when the letter answers nothing. */
    std::string inReplyTo;
    /** For References. */
    std::vector<std::string> references;
    /** The message that is handed on whole; null for none. */
    std::shared_ptr<const ReceivedMessage> original;
    /** The name of the file that the original becomes. */
    QString originalName;

    bool isEmpty() const { return inReplyTo.empty() && references.empty() && !original; }

    bool operator==(const LetterOrigin& other) const {
        const bool sameOriginal = original == other.original ||
                                  (original && other.original && original->header == other.original->header &&
                                   original->body == other.original->body);
        return sameOriginal && inReplyTo == other.inReplyTo && references == other.references &&
               originalName == other.originalName;
    }
};

/** What is written in the compose window, apart from its addresses and its subject. */
struct Letter {
    /** The lines end in CR LF. */
    std::string text;
    /** The drive path of a file to attach; empty for none. */
    QString attachment;
    LetterOrigin origin;
};
