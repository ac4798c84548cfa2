#pragma once

#include "components/smtplib/address_list.h"
#include "components/smtplib/message.h"
#include "message/composer.h"
#include "message/letter.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>

/** Makes of what the compose window holds the message that goes out. The compose handlers know only this. */
class MessageWriter {
  public:
    MessageWriter() = default;
    virtual ~MessageWriter() = default;
    MessageWriter(const MessageWriter&) = delete;
    MessageWriter& operator=(const MessageWriter&) = delete;

    /** Typed text in UTF-8. */
    virtual std::string bytesOf(const QString& typed) const = 0;

    /**
     * Composes the message and encodes the attachment, before the fields are checked.
     * \throws RuntimeError whatever encode throws, and 52 for a name of a file that cannot be sent.
     */
    virtual ComposedMessage compose(const Letter& letter, const EncodeAttachment& encode) const = 0;

    /**
     * Checks sender, recipients, copies and subject before a server is asked.
     * \throws RuntimeError 20401 to 20403, as the SMTP client would for them.
     */
    virtual void check(const smtplib::Message& fields) const = 0;

    /** The first of the addresses that the error of check() or of sending is about; nothing for none. */
    virtual std::optional<smtplib::AddressFault> findFault(std::string_view addresses, int error) const = 0;
};
