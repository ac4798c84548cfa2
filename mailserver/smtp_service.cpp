#include "mailserver/smtp_service.h"

#include "mailserver/incoming_text.h"
#include "mailserver/mail_text.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace mailserver {

namespace {

bool isLocal(std::string_view recipient) {
    return upperCase(recipient.substr(recipient.rfind('@') + 1)) == upperCase(kLocalDomain);
}

/** The protocol's name as it has been registered (RFC 3848). */
std::string protocolOf(const IncomingMessage& message) {
    const std::string name = message.extended ? "ESMTP" : "SMTP";
    return name + (message.encrypted && message.extended ? "S" : "") + (message.loggedOn ? "A" : "");
}

std::string traceLine(const std::string& hostName, const IncomingMessage& message) {
    return "Received: from " + message.clientName + " by " + hostName + " with " + protocolOf(message) +
           "; " + QDateTime::currentDateTimeUtc().toString(Qt::RFC2822Date).toStdString() + "\r\n";
}

} // namespace

SmtpService deliveryInto(Mailbox& mailbox, SmtpFeatures features) {
    const std::string hostName = "demo.example.org";
    return {hostName,
            [&mailbox, hostName](const IncomingMessage& message) {
                return std::none_of(message.recipients.begin(), message.recipients.end(), isLocal) ||
                       mailbox.append(traceLine(hostName, message) + withoutDoubledDots(message.lines));
            },
            std::move(features)};
}

} // namespace mailserver
