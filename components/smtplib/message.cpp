#include "components/smtplib/message.h"

#include "components/smtplib/message_header.h"
#include "platform/runtime_error.h"

#include <QRandomGenerator>

namespace smtplib {

using platform::RuntimeError;
namespace errors = platform::errors;

namespace {
Address senderOf(const std::string& text, AddressCharacters characters = AddressCharacters::Ascii) {
    const std::vector<Address> addresses = parseAddressList(text, characters);
    if (addresses.size() != 1) {
        throw RuntimeError(errors::BadAddress);
    }
    return addresses.front();
}
} // namespace

PreparedMessage prepareMessage(const Message& message, const QDateTime& now) {
    HeaderFields fields;
    fields.sender = senderOf(message.sender);
    fields.recipients = parseAddressList(message.recipients);
    fields.copies = parseAddressList(message.copies);
    fields.subject = message.subject;
    fields.date = now;
    fields.messageId = message.messageId;
    fields.additionalLines = message.additionalHeaders;
    PreparedMessage prepared;
    prepared.sender = fields.sender.mailbox();
    prepared.mailboxes = distinctMailboxes(fields.recipients, fields.copies);
    if (prepared.mailboxes.empty()) {
        throw RuntimeError(errors::NoRecipient);
    }
    prepared.header = messageHeader(fields) + "\r\n";
    return prepared;
}

std::string newMessageId(const std::string& sender, const QDateTime& now) {
    const QString id = QStringLiteral("<%1.%2@%3>")
                           .arg(now.toMSecsSinceEpoch())
                           .arg(QRandomGenerator::system()->generate64(), 16, 16, QLatin1Char('0'))
                           .arg(QString::fromStdString(senderOf(sender, AddressCharacters::Any).domain));
    return id.toStdString();
}

} // namespace smtplib
