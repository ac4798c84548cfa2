#pragma once

#include "message/message_writer.h"

/** The program's own writer: the message that Compose() makes. It takes nothing along from another message.
 */
class HouseWriter final : public MessageWriter {
  public:
    std::string bytesOf(const QString& typed) const override;
    ComposedMessage compose(const Letter& letter, const EncodeAttachment& encode) const override;
    void check(const smtplib::Message& fields) const override;
    std::optional<smtplib::AddressFault> findFault(std::string_view addresses, int error) const override;
};
