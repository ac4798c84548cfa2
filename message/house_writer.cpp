#include "message/house_writer.h"

#include "platform/text.h"

#include <QDateTime>

std::string HouseWriter::bytesOf(const QString& typed) const {
    return platform::toBytes(typed);
}

ComposedMessage HouseWriter::compose(const Letter& letter, const EncodeAttachment& encode) const {
    return Compose(letter.text, letter.attachment, encode);
}

void HouseWriter::check(const smtplib::Message& fields) const {
    smtplib::prepareMessage(fields, QDateTime::currentDateTime());
}

std::optional<smtplib::AddressFault> HouseWriter::findFault(std::string_view addresses, int error) const {
    const auto fault = smtplib::findAddressFault(addresses);
    return fault && fault->error == error ? fault : std::nullopt;
}
