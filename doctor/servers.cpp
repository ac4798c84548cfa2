#include "doctor/servers.h"

#include "doctor/server_names.h"
#include "platform/error_meanings.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QUrl>

#include <algorithm>
#include <array>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace doctor {

using transport::Outcome;
namespace errors = platform::errors;

namespace {
/** The addresses of a host in the order of the system; an address is its own. */
QStringList addressesOf(const QString& host) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_ADDRCONFIG;
    const QByteArray ascii = QUrl::toAce(host);
    const QByteArray name = ascii.isEmpty() ? host.toUtf8() : ascii;
    addrinfo* found = nullptr;
    if (::getaddrinfo(name.constData(), nullptr, &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
    QStringList addresses;
    for (const addrinfo* one = found; one != nullptr; one = one->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        const int failed = ::getnameinfo(one->ai_addr, one->ai_addrlen, text.data(),
                                         static_cast<socklen_t>(text.size()), nullptr, 0, NI_NUMERICHOST);
        const QString address = failed == 0 ? QString::fromLatin1(text.data()) : QString();
        if (!address.isEmpty() && !addresses.contains(address)) {
            addresses.append(address);
        }
    }
    return addresses;
}

QString problemOf(Outcome outcome) {
    const int error =
        transport::openingErrorNumber(outcome, errors::MailServerTrouble, errors::MailServerTrouble);
    switch (outcome) {
    case Outcome::Done:
        return {};
    case Outcome::TimedOut:
        return QStringLiteral("no answer");
    case Outcome::Lost:
        return QStringLiteral("the connection broke");
    default:
        return QString::fromStdString(platform::meaningOf(error));
    }
}
} // namespace

std::vector<AddressSeen> tryAddresses(const transport::ServerName& server, const Patience& patience) {
    std::vector<AddressSeen> seen;
    for (const QString& address : addressesOf(server.host)) {
        transport::Connection connection;
        QElapsedTimer time;
        time.start();
        // Nothing is said there, so the connection need not be encrypted.
        const Outcome outcome = connection.open({address, server.port, transport::Security::Never},
                                                QDeadlineTimer(patience.connection));
        seen.push_back({address, problemOf(outcome), time.elapsed()});
        connection.abort();
    }
    return seen;
}

void addDeafAddresses(const ServerSeen& server, std::vector<Finding>& findings) {
    const auto isDeaf = [](const AddressSeen& address) { return !address.problem.isEmpty(); };
    if (std::all_of(server.addresses.begin(), server.addresses.end(), isDeaf)) {
        return;
    }
    for (const AddressSeen& address : server.addresses) {
        if (isDeaf(address)) {
            Finding finding;
            finding.grade = Grade::Met;
            finding.about = server.protocol;
            finding.text =
                QStringLiteral(
                    "%1 has the address %2, which does not work: %3. Members may have to wait until "
                    "another address is tried.")
                    .arg(server.host, address.address, address.problem);
            finding.advice =
                QStringLiteral("Take the address out of the name service, or let the server listen there.");
            findings.push_back(finding);
        }
    }
}

QString whyRefused(int error, const QString& host) {
    switch (error) {
    case errors::CertificateNotTrusted:
        return QStringLiteral("nobody whom this computer trusts has issued it");
    case errors::CertificateForOtherName:
        return QStringLiteral("it is not for %1").arg(host);
    case errors::CertificateNotValidNow:
        return QStringLiteral("it is not valid today");
    default:
        return {};
    }
}

CertificateSeen seenCertificate(const transport::Certificate& certificate, int error, const QString& host) {
    CertificateSeen seen;
    seen.subject = certificate.subject;
    seen.issuer = certificate.issuer;
    seen.names = certificate.names;
    seen.validFrom = certificate.validFrom.toUTC().toString(QStringLiteral("yyyy-MM-dd"));
    seen.validUntil = certificate.validUntil.toUTC().toString(QStringLiteral("yyyy-MM-dd"));
    seen.isValid = error == 0;
    if (!seen.isValid) {
        seen.reason = (QStringList(whyRefused(error, host)) + certificate.faults).join(QStringLiteral("; "));
    }
    return seen;
}

void addEndOfCertificate(const ServerSeen& server, std::vector<Finding>& findings) {
    constexpr qint64 soon = 14; // days
    if (!server.certificate || !server.certificate->isValid) {
        return;
    }
    const QDate end = QDate::fromString(server.certificate->validUntil, QStringLiteral("yyyy-MM-dd"));
    if (QDate::currentDate().daysTo(end) < soon) {
        Finding finding;
        finding.grade = Grade::Met;
        finding.about = server.protocol;
        finding.number = errors::CertificateNotValidNow;
        finding.text = QStringLiteral("The certificate is valid until %1 only; then nobody gets through.")
                           .arg(server.certificate->validUntil);
        finding.advice = QStringLiteral("Renew it.");
        findings.push_back(finding);
    }
}

QString meaningForAdministrators(int error) {
    QString meaning = QString::fromStdString(platform::meaningOf(error));
    return meaning.remove(QStringLiteral(" Tell the administrator."));
}

QString adviceFor(int error, const QString& protocol) {
    const QString line =
        protocol == QLatin1String("POP3") ? QStringLiteral("line 3") : QStringLiteral("line 4");
    switch (error) {
    case errors::HostNotFound:
        return QStringLiteral("Correct %1, or see why the name service does not know the name.").arg(line);
    case errors::ConnectionRefused:
        return QStringLiteral("Correct %1: nothing listens at that port.").arg(line);
    case errors::NetworkUnreachable:
        return QStringLiteral("Connect the computer, and install all files of the program.");
    case errors::EncryptionNotOffered:
        return QStringLiteral("Write tls:// before the name in %1, or let the server offer %2.")
            .arg(line,
                 protocol == QLatin1String("POP3") ? QStringLiteral("STLS") : QStringLiteral("STARTTLS"));
    case errors::CertificateNotTrusted:
        return QStringLiteral(
            "Let the server send the whole chain, and install on this computer the package ca-certificates "
            "and, where the authority is your own, its root certificate.");
    case errors::CertificateForOtherName:
        return QStringLiteral("Write the name that stands in the certificate into %1.").arg(line);
    case errors::CertificateNotValidNow:
        return QStringLiteral("Renew the certificate; look at this computer's clock.");
    case errors::EncryptionFailed:
        return QStringLiteral(
                   "Look at port and spelling in %1: tls:// for 995 and 465, starttls:// for 110 and 587.")
            .arg(line);
    case errors::LogOnRefused:
        return QStringLiteral(
            "Type the password again; if it is right, store it at the server in a form that its ways "
            "to log on need, or do not offer those.");
    case errors::SendingLogOnImpossible:
        return QStringLiteral("Write tls:// or starttls:// before the name in %1.").arg(line);
    case errors::SendingLogOnRefused:
    case errors::SendingLogOnRefusedForNow:
        return QStringLiteral("Give members the same name and password for both servers.");
    case errors::MailServerTrouble:
    case errors::SendingTimedOut:
    case errors::SendingOutOfStep:
    case errors::SendingLost:
        return QStringLiteral("Correct scheme and port in %1: a server that says nothing mostly waits for "
                              "TLS, and one of "
                              "another kind says what makes no sense here.")
            .arg(line);
    default:
        return QStringLiteral("Look into the server's log.");
    }
}

QString Surveys::said(const std::string& bytes) const {
    constexpr std::size_t most = 500;
    return platform::withControlsVisible(platform::startFromBytes(secrets.hiddenIn(bytes), most));
}

QString withScheme(const QString& typed, const transport::ServerName& server, const QString& scheme) {
    const auto parts = transport::takenApart(typed);
    const bool bracketed = parts && (parts->isBracketed || server.host.contains(u':'));
    return scheme + (bracketed ? u'[' + server.host + u']' : server.host) + u':' +
           QString::number(server.port);
}

std::optional<transport::ServerName> approach(ServerSeen& server, const transport::DefaultPorts& ports,
                                              const Surveys& surveys) {
    auto parsed = transport::parseServerName(server.name, ports);
    if (parsed) {
        server.host = parsed->host;
        server.port = parsed->port;
        server.promise = promiseOf(*parsed);
        surveys.tell(QStringLiteral("Connecting with %1").arg(parsed->host));
        server.addresses = tryAddresses(*parsed, surveys.patience);
        addDeafAddresses(server, surveys.report.findings);
    }
    return parsed;
}

} // namespace doctor
