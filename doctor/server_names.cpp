#include "doctor/server_names.h"

#include "components/poplib/pop.h"
#include "components/smtplib/smtp.h"
#include "email/box_texts.h"
#include "platform/runtime_error.h"
#include "retrieval/log_in_failures.h"

#include <algorithm>
#include <array>
#include <utility>

namespace doctor {

using transport::Security;
using transport::ServerName;
namespace errors = platform::errors;

namespace {
/** A mail protocol: its ports, and how its failures are told. */
struct Protocol {
    const char* name;
    transport::DefaultPorts ports;
    /** The error when a server that is to speak first says nothing. */
    int silence;
    QString (*box)(int error);
};

constexpr Protocol kPop3{"POP3", poplib::POP::kDefaultPorts, errors::MailServerTrouble, boxOfFailedLogIn};
constexpr Protocol kSmtp{"SMTP", smtplib::SMTP::kDefaultPorts, errors::SendingTimedOut,
                         email::boxOfFailedSending};

/** The ports of protocols of mail, and what is spoken there. */
constexpr std::array<std::pair<std::uint16_t, const char*>, 7> kKnownPorts = {
    {{110, "POP3"}, {995, "POP3"}, {25, "SMTP"}, {465, "SMTP"}, {587, "SMTP"}, {143, "IMAP"}, {993, "IMAP"}}};

/** The protocol that is spoken at a well-known port; empty for any other port. */
QString spokenAt(std::uint16_t port) {
    const auto* const found = std::find_if(kKnownPorts.begin(), kKnownPorts.end(),
                                           [port](const auto& known) { return known.first == port; });
    return found == kKnownPorts.end() ? QString() : QLatin1String(found->second);
}

Finding failing(const Protocol& protocol, Grade grade, int line, int number, const QString& text) {
    Finding finding;
    finding.grade = grade;
    finding.about = QStringLiteral("settings");
    finding.line = line;
    finding.number = number;
    finding.box = protocol.box(number);
    finding.text = text;
    return finding;
}

std::vector<Finding> findingsOfPort(const Protocol& protocol, const ServerName& server, int line) {
    std::vector<Finding> findings;
    const auto contradicts = [&](int number, const QString& text, const QString& advice) {
        findings.push_back(failing(protocol, Grade::Met, line, number, text));
        findings.back().advice = advice;
    };
    const QString spoken = spokenAt(server.port);
    if (!spoken.isEmpty() && spoken != QLatin1String(protocol.name)) {
        contradicts(protocol.silence,
                    QStringLiteral("%1 is spoken at port %2, not %3.")
                        .arg(spoken)
                        .arg(server.port)
                        .arg(QLatin1String(protocol.name)),
                    QStringLiteral("Leave the port out, or write the right one."));
    } else if (server.port == protocol.ports.tls && server.security != Security::FromTheStart) {
        contradicts(
            protocol.silence,
            QStringLiteral("At port %1 everything is encrypted from the first byte, which plain:// and "
                           "starttls:// are not.")
                .arg(server.port),
            QStringLiteral("Write tls:// before the name."));
    } else if (!spoken.isEmpty() && server.port != protocol.ports.tls &&
               server.security == Security::FromTheStart) {
        contradicts(errors::EncryptionFailed,
                    QStringLiteral("At port %1 a connection begins in clear, which one with tls:// does not.")
                        .arg(server.port),
                    QStringLiteral("Leave the port out, or write starttls://."));
    }
    return findings;
}

std::vector<Finding> findingsOf(const Protocol& protocol, const QString& typed, int line) {
    const auto server = transport::parseServerName(typed, protocol.ports);
    if (!server) {
        Finding finding = failing(protocol, Grade::Stops, line, errors::HostNotFound,
                                  QStringLiteral("\"%1\" is no name of a server.").arg(typed));
        finding.advice =
            QStringLiteral("Write the host's name, with tls://, starttls:// or plain:// before it or "
                           "nothing, and a port only where it is another one than usual.");
        return {finding};
    }
    std::vector<Finding> findings = findingsOfPort(protocol, *server, line);
    if (findings.empty() && !mustBeProven(server->security)) {
        Finding finding;
        finding.about = QStringLiteral("settings");
        finding.line = line;
        finding.text =
            QStringLiteral("The server does not have to prove who it is, so the password may go to "
                           "somebody on the way.");
        finding.advice =
            QStringLiteral("Write tls:// or starttls:// before the name, if the server can do that.");
        findings.push_back(finding);
    }
    return findings;
}
} // namespace

QString promiseOf(const ServerName& server) {
    switch (server.security) {
    case Security::FromTheStart:
        return QStringLiteral("encrypted from the first byte, certificate must be valid");
    case Security::Demanded:
        return QStringLiteral("encrypted before anything is said that matters, certificate must be valid");
    case Security::WhenOffered:
        return QStringLiteral("encrypted where the server offers it, certificate not looked at");
    case Security::Never:
        break;
    }
    return QStringLiteral("never encrypted");
}

QString meaningOfName(const QString& typed, const transport::DefaultPorts& ports) {
    const auto server = transport::parseServerName(typed, ports);
    return server ? QStringLiteral("%1, port %2: %3.")
                        .arg(server->host)
                        .arg(server->port)
                        .arg(promiseOf(*server))
                  : QStringLiteral("No name of a server.");
}

std::vector<Finding> findingsOfPopServer(const QString& typed, int line) {
    return findingsOf(kPop3, typed, line);
}

std::vector<Finding> findingsOfSmtpServer(const QString& typed, int line) {
    return findingsOf(kSmtp, typed, line);
}

} // namespace doctor
