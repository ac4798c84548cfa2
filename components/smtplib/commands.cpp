#include "components/smtplib/commands.h"

#include <QString>

namespace smtplib {

namespace {
/** A command of which nothing is secret. */
Command openCommand(CommandKind kind, const std::string& line) {
    return {{line, line}, kind};
}
} // namespace

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

Command ehloCommand(const std::string& addressLiteral) {
    return openCommand(CommandKind::Ehlo, "EHLO " + addressLiteral);
}

Command heloCommand(const std::string& addressLiteral) {
    return openCommand(CommandKind::Helo, "HELO " + addressLiteral);
}

Command startTlsCommand() {
    return openCommand(CommandKind::StartTls, "STARTTLS");
}

Command authCommand(std::string_view mechanism, std::string_view initialResponse) {
    const std::string line = "AUTH " + std::string(mechanism);
    if (initialResponse.empty()) {
        return openCommand(CommandKind::Auth, line);
    }
    return {{line + ' ' + std::string(initialResponse), line + " ****"}, CommandKind::Auth};
}

Command authResponseCommand(std::string_view response) {
    if (response == "*") {
        return openCommand(CommandKind::AuthResponse, "*");
    }
    return {{std::string(response), std::string(protocol::kHidden)}, CommandKind::AuthResponse};
}

Command mailCommand(const Envelope& envelope, bool withSize, bool withBody) {
    std::string line = "MAIL FROM:<" + envelope.sender + '>';
    if (withSize) {
        line += " SIZE=" + std::to_string(envelope.messageBytes);
    }
    if (withBody && envelope.eightBit) {
        line += " BODY=8BITMIME";
    }
    if (envelope.smtpUtf8) {
        line += " SMTPUTF8";
    }
    return openCommand(CommandKind::Mail, line);
}

Command rcptCommand(const std::string& mailbox) {
    return openCommand(CommandKind::Rcpt, "RCPT TO:<" + mailbox + '>');
}

Command dataCommand() {
    return openCommand(CommandKind::Data, "DATA");
}

Command endOfMessageCommand() {
    return openCommand(CommandKind::EndOfMessage, ".");
}

Command quitCommand() {
    return openCommand(CommandKind::Quit, "QUIT");
}

} // namespace smtplib
