#pragma once

#include "message/message_writer.h"

/**
 * Writes messages as RFC 5322, 2045 to 2049, 2047, 2231 and 6532 have them. The form of the message is
 * settled once the server has told its extensions (ComposedMessage::form). \see docs/decisions/0029
 */
class StandardWriter final : public MessageWriter {
  public:
    /** Halves of surrogate pairs become U+FFFD. */
    std::string bytesOf(const QString& typed) const override;
    ComposedMessage compose(const Letter& letter, const EncodeAttachment& encode) const override;
    void check(const smtplib::Message& fields) const override;
    std::optional<smtplib::AddressFault> findFault(std::string_view addresses, int error) const override;
};
