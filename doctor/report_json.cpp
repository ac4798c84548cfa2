#include "doctor/report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace doctor {

namespace {
/** null for what does not apply. */
QJsonValue textOrNull(const QString& text) {
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonValue numberOrNull(std::int64_t number) {
    return number == 0 ? QJsonValue() : QJsonValue(static_cast<qint64>(number));
}

template <class Number>
QJsonValue orNull(const std::optional<Number>& number) {
    return number ? QJsonValue(static_cast<qint64>(*number)) : QJsonValue();
}

QString wordFor(Grade grade) {
    switch (grade) {
    case Grade::Stops:
        return QStringLiteral("stops");
    case Grade::Met:
        return QStringLiteral("met");
    case Grade::Info:
        break;
    }
    return QStringLiteral("info");
}

QJsonObject objectOf(const SettingSeen& setting) {
    return {{QStringLiteral("line"), setting.line},
            {QStringLiteral("key"), setting.key},
            {QStringLiteral("value"), setting.value},
            {QStringLiteral("meaning"), setting.meaning}};
}

QJsonObject objectOf(const AddressSeen& address) {
    return {{QStringLiteral("address"), address.address},
            {QStringLiteral("connected"), address.problem.isEmpty()},
            {QStringLiteral("problem"), textOrNull(address.problem)},
            {QStringLiteral("milliseconds"), static_cast<qint64>(address.milliseconds)}};
}

QJsonObject objectOf(const CertificateSeen& certificate) {
    return {{QStringLiteral("subject"), certificate.subject},
            {QStringLiteral("issuer"), certificate.issuer},
            {QStringLiteral("names"), QJsonArray::fromStringList(certificate.names)},
            {QStringLiteral("validFrom"), certificate.validFrom},
            {QStringLiteral("validUntil"), certificate.validUntil},
            {QStringLiteral("valid"), certificate.isValid},
            {QStringLiteral("reason"), textOrNull(certificate.reason)}};
}

QJsonObject objectOf(const Finding& finding) {
    return {{QStringLiteral("grade"), wordFor(finding.grade)},
            {QStringLiteral("about"), finding.about},
            {QStringLiteral("line"), numberOrNull(finding.line)},
            {QStringLiteral("message"), numberOrNull(finding.message)},
            {QStringLiteral("from"), textOrNull(finding.from)},
            {QStringLiteral("subject"), textOrNull(finding.subject)},
            {QStringLiteral("size"), orNull(finding.size)},
            {QStringLiteral("number"), numberOrNull(finding.number)},
            {QStringLiteral("box"), textOrNull(finding.box)},
            {QStringLiteral("text"), finding.text},
            {QStringLiteral("advice"), textOrNull(finding.advice)}};
}

QJsonObject objectOf(const ServerSeen& server);

template <class Thing>
QJsonArray arrayOf(const std::vector<Thing>& things) {
    QJsonArray array;
    for (const Thing& thing : things) {
        array.append(objectOf(thing));
    }
    return array;
}

QJsonObject objectOf(const ServerSeen& server) {
    return {{QStringLiteral("protocol"), server.protocol},
            {QStringLiteral("name"), server.name},
            {QStringLiteral("host"), textOrNull(server.host)},
            {QStringLiteral("port"), numberOrNull(server.port)},
            {QStringLiteral("promise"), textOrNull(server.promise)},
            {QStringLiteral("addresses"), arrayOf(server.addresses)},
            {QStringLiteral("greeting"), textOrNull(server.greeting)},
            {QStringLiteral("milliseconds"), orNull(server.milliseconds)},
            {QStringLiteral("encryption"), textOrNull(server.encryption)},
            {QStringLiteral("certificate"),
             server.certificate ? QJsonValue(objectOf(*server.certificate)) : QJsonValue()},
            {QStringLiteral("offers"), QJsonArray::fromStringList(server.offers)},
            {QStringLiteral("uses"), QJsonArray::fromStringList(server.uses)},
            {QStringLiteral("logOn"), textOrNull(server.logOn)},
            {QStringLiteral("messages"), orNull(server.messages)},
            {QStringLiteral("bytes"), orNull(server.bytes)}};
}
} // namespace

QByteArray asJson(const Report& report) {
    const QJsonObject object{{QStringLiteral("status"), report.status()},
                             {QStringLiteral("settings"), arrayOf(report.settings)},
                             {QStringLiteral("servers"), arrayOf(report.servers)},
                             {QStringLiteral("findings"), arrayOf(report.findings)}};
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

} // namespace doctor
