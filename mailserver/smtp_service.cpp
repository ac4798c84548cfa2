#include "mailserver/smtp_service.h"

#include "mailserver/incoming_text.h"
#include "mailserver/mail_text.h"

#include <QDateTime>

#include <algorithm>

namespace mailserver {

namespace {

bool isLocal(std::string_view recipient) {
    return upperCase(recipient.substr(recipient.rfind('@') + 1)) == upperCase(kLocalDomain);
}

std::string traceLine(const std::string& hostName, const IncomingMessage& message) {
    return "Received: from " + message.clientName + " by " + hostName + " with " +
           (message.extended ? "ESMTP" : "SMTP") + "; " +
           QDateTime::currentDateTimeUtc().toString(Qt::RFC2822Date).toStdString() + "\r\n";
}

} // namespace

SmtpService deliveryInto(Mailbox& mailbox) {
    const std::string hostName = "demo.example.org";
    return {hostName, [&mailbox, hostName](const IncomingMessage& message) {
                return std::none_of(message.recipients.begin(), message.recipients.end(), isLocal) ||
                       mailbox.append(traceLine(hostName, message) + withoutDoubledDots(message.lines));
            }};
}

} // namespace mailserver
