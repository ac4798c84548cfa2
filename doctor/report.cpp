#include "doctor/report.h"

#include "platform/text.h"

#include <algorithm>

namespace doctor {

namespace {
constexpr int kKeyWidth = 16;

/** A line of the report, indented; what strangers have put into it is shown and not obeyed. */
QString line(int indent, const QString& text) {
    return QString(indent, u' ') + platform::withControlsVisible(text) + u'\n';
}

QString named(const QString& name, const QString& value) {
    return value.isEmpty() ? QString() : line(4, name + QStringLiteral(": ") + value);
}

QString textOfSettings(const std::vector<SettingSeen>& settings) {
    QString text = settings.empty() ? QString() : QStringLiteral("\nSettings\n");
    for (const SettingSeen& setting : settings) {
        text += line(2, QStringLiteral("%1  %2 %3")
                            .arg(setting.line, 2)
                            .arg(platform::fitted(setting.key, kKeyWidth), setting.value));
        text += line(6, setting.meaning);
    }
    return text;
}

QString textOf(const CertificateSeen& certificate) {
    return QStringLiteral("%1 (%2), issued by %3, valid from %4 until %5; %6")
        .arg(certificate.subject, certificate.names.join(QStringLiteral(", ")), certificate.issuer,
             certificate.validFrom, certificate.validUntil,
             certificate.isValid ? QStringLiteral("valid for this host") : certificate.reason);
}

QString textOf(const ServerSeen& server) {
    QString text = line(2, QStringLiteral("%1 %2").arg(server.protocol, server.name));
    if (server.port != 0) {
        text +=
            line(4, QStringLiteral("%1, port %2: %3").arg(server.host).arg(server.port).arg(server.promise));
    }
    for (const AddressSeen& address : server.addresses) {
        text += named(address.address, address.problem.isEmpty()
                                           ? QStringLiteral("connected in %1 ms").arg(address.milliseconds)
                                           : address.problem);
    }
    text += named(QStringLiteral("greeting"), server.greeting);
    if (server.milliseconds) {
        text += named(QStringLiteral("encryption"),
                      server.encryption.isEmpty() ? QStringLiteral("none") : server.encryption);
    }
    if (server.certificate) {
        text += named(QStringLiteral("certificate"), textOf(*server.certificate));
    }
    text += named(QStringLiteral("offers"), server.offers.join(QStringLiteral(", ")));
    text += named(QStringLiteral("the program will use"), server.uses.join(QStringLiteral(", ")));
    if (server.milliseconds) {
        text += named(QStringLiteral("a session without a log-on"),
                      QStringLiteral("%1 ms").arg(*server.milliseconds));
    }
    text += named(QStringLiteral("log-on"), server.logOn);
    if (server.messages) {
        text += named(
            QStringLiteral("mailbox"),
            QStringLiteral("%1 messages, %2 bytes").arg(*server.messages).arg(server.bytes.value_or(0)));
    }
    return text;
}

QString messageOf(const Finding& finding) {
    if (finding.message == 0) {
        return {};
    }
    QString text = QStringLiteral("message %1").arg(finding.message);
    if (!finding.from.isEmpty()) {
        text += QStringLiteral(" from ") + finding.from;
    }
    if (!finding.subject.isEmpty()) {
        text += QStringLiteral(", \"%1\"").arg(finding.subject);
    }
    if (finding.size) {
        text += QStringLiteral(", %1 bytes").arg(*finding.size);
    }
    return text + QStringLiteral(": ");
}

QString textOf(const Finding& finding) {
    const QString where = finding.line == 0 ? QString() : QStringLiteral("line %1: ").arg(finding.line);
    QString text = line(2, finding.about + QStringLiteral(": ") + where + messageOf(finding) + finding.text);
    if (!finding.box.isEmpty()) {
        text += line(6, QStringLiteral("Members see: ") + finding.box);
    }
    if (!finding.advice.isEmpty()) {
        text += line(6, QStringLiteral("What to do: ") + finding.advice);
    }
    return text;
}

QString textOfGrade(const Report& report, Grade grade, const QString& title) {
    QString text;
    for (const Finding& finding : report.findings) {
        if (finding.grade == grade) {
            text += textOf(finding);
        }
    }
    return text.isEmpty() ? text : u'\n' + title + u'\n' + text;
}
} // namespace

int Report::status() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.grade == Grade::Stops; })
               ? 1
               : 0;
}

QString asText(const Report& report) {
    QString text = line(
        0, QStringLiteral("Brindlewake in %1, reading mail in the %2 way").arg(report.folder, report.mode));
    text += textOfSettings(report.settings);
    if (!report.servers.empty()) {
        text += QStringLiteral("\nServers\n");
    }
    for (const ServerSeen& server : report.servers) {
        text += textOf(server);
    }
    text += textOfGrade(report, Grade::Stops, QStringLiteral("This stops members"));
    text += textOfGrade(report, Grade::Met, QStringLiteral("This will be met by members"));
    text += textOfGrade(report, Grade::Info, QStringLiteral("For information"));
    return text + (report.status() == 0 ? QStringLiteral("\nNothing that was examined stops members.\n")
                                        : QStringLiteral("\nMembers are stopped.\n"));
}

} // namespace doctor
