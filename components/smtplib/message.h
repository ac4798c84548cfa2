#pragma once

#include "components/smtplib/address_list.h"
#include "components/smtplib/reply_reader.h"
#include "platform/private_file.h"

#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace smtplib {

/** One message as it is typed. Texts are UTF-8. */
struct Message {
    /** One address, as "bob@example.org". */
    std::string sender;
    /** Addresses with commas between them; parseAddressList() says what they may look like. */
    std::string recipients;
    std::string copies;
    std::string subject;
    /** Further header lines, each with CR LF behind it; empty for none. */
    std::string additionalHeaders;
    /** With its angle brackets. A message that is sent again after a failure keeps its Message-ID. */
    std::string messageId;
    std::string body;
    /** The drive path of a file whose content follows the body; empty for none. */
    QString dataFile;
    /** The file holds nothing but short lines of ASCII that end in CR LF, as an encoder writes them. */
    bool dataFileEncoded = false;
    /** The same file, open; nothing when it is still to be opened. */
    platform::HeldFile heldDataFile;
};

/** The envelope and the header of a message, and its body where that is not the one that was set. */
struct PreparedMessage {
    std::string sender;
    /** Of recipients and copies together, each mailbox once. */
    std::vector<std::string> mailboxes;
    /** With the empty line behind it. */
    std::string header;
    /** In place of the message's own; the data file follows it all the same. */
    std::optional<std::string> body = {};
    /** An address has characters beyond ASCII. */
    bool smtpUtf8 = false;
};

/**
 * Gives a message the form in which it goes out, once the server has told its extensions. What it raises ends
 * the transmission before anything is asked.
 */
using MessageForm =
    std::function<PreparedMessage(const Message& message, const Extensions& offered, const QDateTime& now)>;

/**
 * Checks all fields and makes the header from them. An empty Message-ID is left out.
 * \throws RuntimeError 20403 when a field holds CR, LF or NUL, 20401 for a malformed address, 20402 when
 * there is no recipient, 20404 for a wrong header line or Message-ID.
 */
PreparedMessage prepareMessage(const Message& message, const QDateTime& now);

/**
 * Returns a Message-ID for a message of this sender that no other message has (RFC 5322 section 3.6.4).
 * \throws RuntimeError 20403 or 20401 when the sender is no address.
 */
std::string newMessageId(const std::string& sender, const QDateTime& now);

} // namespace smtplib
