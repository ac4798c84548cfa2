#include "doctor/report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using doctor::Grade;
using doctor::Report;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

Report exampleReport() {
    Report report;
    report.folder = QStringLiteral("/srv/mail");
    report.mode = QStringLiteral("house");
    report.settings.push_back(
        {3, QStringLiteral("POPServer"), QStringLiteral("h"), QStringLiteral("h, port 110.")});
    doctor::ServerSeen server{QStringLiteral("POP3"), QStringLiteral("h")};
    server.addresses.push_back({QStringLiteral("192.0.2.1"), {}, 12});
    server.certificate = doctor::CertificateSeen{QStringLiteral("h"),
                                                 QStringLiteral("Root"),
                                                 {QStringLiteral("h")},
                                                 QStringLiteral("2026-01-01"),
                                                 QStringLiteral("2027-01-01"),
                                                 true,
                                                 {}};
    report.servers.push_back(server);
    doctor::Finding finding;
    finding.grade = Grade::Met;
    finding.about = QStringLiteral("message");
    finding.text = QStringLiteral("It opens\x1b[31m empty.");
    finding.message = 7;
    finding.subject = QStringLiteral("hello");
    finding.size = 0;
    report.findings.push_back(finding);
    return report;
}

QJsonObject parsed(const Report& report) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(asJson(report), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return document.object();
}

std::vector<std::string> keysOf(const QJsonValue& value) {
    std::vector<std::string> keys;
    for (const QString& key : value.toObject().keys()) {
        keys.push_back(key.toStdString());
    }
    return keys;
}

TEST(DoctorsReport, TheStatusIs1OnlyWhenSomethingStopsMembers) {
    Report report = exampleReport();
    EXPECT_EQ(report.status(), 0);
    report.findings.push_back({Grade::Info, QStringLiteral("fonts"), QStringLiteral("There are some.")});
    EXPECT_EQ(report.status(), 0);
    report.findings.push_back({Grade::Stops, QStringLiteral("POP3"), QStringLiteral("No.")});
    EXPECT_EQ(report.status(), 1);
    EXPECT_EQ(parsed(report).value(QStringLiteral("status")).toInt(-1), 1);
}

TEST(DoctorsReport, HasTheSameKeysForEverythingInJson) {
    const QJsonObject object = parsed(exampleReport());
    EXPECT_THAT(keysOf(object), UnorderedElementsAre("status", "settings", "servers", "findings"));
    EXPECT_THAT(keysOf(object.value(QStringLiteral("settings")).toArray().at(0)),
                UnorderedElementsAre("line", "key", "value", "meaning"));
    EXPECT_THAT(keysOf(object.value(QStringLiteral("findings")).toArray().at(0)),
                UnorderedElementsAre("grade", "about", "line", "message", "from", "subject", "size", "number",
                                     "box", "text", "advice"));
}

TEST(DoctorsReport, WritesNullForWhatDoesNotApply) {
    const QJsonObject finding =
        parsed(exampleReport()).value(QStringLiteral("findings")).toArray().at(0).toObject();
    EXPECT_EQ(finding.value(QStringLiteral("grade")), QJsonValue(QStringLiteral("met")));
    EXPECT_EQ(finding.value(QStringLiteral("message")), QJsonValue(7));
    EXPECT_EQ(finding.value(QStringLiteral("size")), QJsonValue(0));
    for (const char* const key : {"line", "from", "number", "box", "advice"}) {
        EXPECT_TRUE(finding.value(QLatin1String(key)).isNull()) << key;
    }
}

TEST(DoctorsReport, TellsAPersonEverythingAndLetsNobodyElseUseTheTerminal) {
    const QString text = asText(exampleReport());
    for (const char* const words :
         {"/srv/mail", "house", " 3  POPServer", "192.0.2.1: connected in 12 ms", "valid for this host",
          "This will be met by members", "message: message 7, \"hello\", 0 bytes: It opens",
          "Nothing that was examined"}) {
        EXPECT_TRUE(text.contains(QLatin1String(words))) << words << "\n" << text.toStdString();
    }
    EXPECT_FALSE(text.contains(QChar(0x1b)));
    EXPECT_FALSE(text.contains(QStringLiteral("This stops members")));
}
} // namespace
