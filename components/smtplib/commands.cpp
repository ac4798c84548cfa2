#include "components/smtplib/commands.h"

#include <QString>

namespace SMTPLib {

std::string addressLiteral(const QString& localAddress) {
    if (localAddress.isEmpty()) {
        return "[127.0.0.1]";
    }
    if (!localAddress.contains(u':')) {
        return '[' + localAddress.toStdString() + ']';
    }
    const qsizetype lastColon = localAddress.lastIndexOf(u':');
    if (localAddress.contains(u'.')) {
        return '[' + localAddress.sliced(lastColon + 1).toStdString() + ']'; // IPv4, mapped into IPv6
    }
    const qsizetype scope = localAddress.indexOf(u'%');
    return "[IPv6:" + localAddress.first(scope < 0 ? localAddress.size() : scope).toStdString() + ']';
}

std::string ehloCommand(const std::string& addressLiteral) {
    return "EHLO " + addressLiteral;
}

std::string heloCommand(const std::string& addressLiteral) {
    return "HELO " + addressLiteral;
}

std::string mailCommand(const Envelope& envelope, bool withSize, bool withBody) {
    std::string command = "MAIL FROM:<" + envelope.sender + '>';
    if (withSize) {
        command += " SIZE=" + std::to_string(envelope.messageOctets);
    }
    if (withBody && envelope.eightBit) {
        command += " BODY=8BITMIME";
    }
    return command;
}

std::string rcptCommand(const std::string& mailbox) {
    return "RCPT TO:<" + mailbox + '>';
}

} // namespace SMTPLib
