#pragma once

#include <memory>
#include <string>
#include <vector>

/** A message as the server gave it, byte for byte. */
struct ReceivedMessage {
    /** Its header: every line followed by CR LF, without the empty line that ends it. */
    std::string header;
    /** Every line of its body, followed by CR LF. */
    std::string body;
};

/** What an answer to a message, or a message that hands it on, has to know of it. */
struct AnsweredMessage {
    /** Its Message-ID, with the angle brackets; printable ASCII, and empty when it has none of that form. */
    std::string messageId;
    /**
     * What the References field of an answer holds (RFC 5322 section 3.6.4), in its order, the message's own
     * id last. Each of the form of messageId; empty when there is none.
     */
    std::vector<std::string> references;
    /** The whole message; null when no message is open. */
    std::shared_ptr<const ReceivedMessage> original;
};
