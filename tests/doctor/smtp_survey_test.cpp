#include "tests/doctor/findings.h"
#include "tests/doctor/surveyed_servers.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"
#include "tests/support/smtp_script.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using doctor::Finding;
using doctor::Grade;
using support::DoctorsServers;
using support::findingOf;
using support::findingWith;
using support::HoldSilent;
using support::Pop3Mailbox;
using support::Script;
using support::ScriptedServer;
using support::SmtpMailbox;
using support::TlsIdentity;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

TEST_F(DoctorsServers, AGoodSmtpServerIsToldAndGetsNoMessage) {
    SmtpMailbox mailbox;
    mailbox.offers({.startTls = true, .mechanisms = {"PLAIN"}})
        .encryptsWith(TlsIdentity(support::trustedCertificate()));
    ScriptedServer server(mailbox);
    smtp(QStringLiteral("starttls://") + server.address());
    EXPECT_THAT(stops(), IsEmpty());
    EXPECT_FALSE(seen().greeting.isEmpty());
    EXPECT_TRUE(seen().encryption.startsWith(QStringLiteral("TLS 1.")));
    ASSERT_TRUE(seen().certificate);
    EXPECT_TRUE(seen().certificate->isValid);
    EXPECT_TRUE(seen().uses.contains(QStringLiteral("AUTH PLAIN")));
    EXPECT_FALSE(seen().offers.isEmpty());
    EXPECT_EQ(seen().logOn, QStringLiteral("accepted"));
    EXPECT_THAT(server.keywords(), Not(Contains("MAIL")));
    EXPECT_THAT(mailbox.messages(), IsEmpty());
}

TEST_F(DoctorsServers, WithoutAMemberNobodyLogsOnForSending) {
    SmtpMailbox mailbox;
    mailbox.offers({.mechanisms = {"SCRAM-SHA-256"}});
    ScriptedServer server(mailbox);
    smtp(server.address(), false);
    EXPECT_THAT(server.keywords(), Not(Contains("AUTH")));
    EXPECT_TRUE(seen().logOn.isEmpty());
    EXPECT_THAT(stops(), IsEmpty());
}

TEST_F(DoctorsServers, AnSmtpServerThatDoesNotKnowThePasswordStopsMembersWithError20417) {
    SmtpMailbox mailbox;
    mailbox.offers({.mechanisms = {"PLAIN"}}).allowOnly("bob", "other");
    ScriptedServer server(mailbox);
    smtp(server.address());
    EXPECT_EQ(findingWith(20417, report.findings).box,
              QStringLiteral("Unable to send message. Error# 20417"));
    EXPECT_EQ(findingWith(20417, report.findings).grade, Grade::Stops);
}

TEST_F(DoctorsServers, APasswordThatBothServersRefuseIsTakenForMistyped) {
    Pop3Mailbox popMailbox;
    popMailbox.allowOnly("bob", "other");
    ScriptedServer popServer(popMailbox);
    pop3(popServer.address());
    SmtpMailbox mailbox;
    mailbox.offers({.mechanisms = {"PLAIN"}}).allowOnly("bob", "other");
    ScriptedServer server(mailbox);
    smtp(server.address());
    const QString advice = findingWith(20417, report.findings).advice;
    EXPECT_TRUE(advice.contains(QStringLiteral("Type the password again"))) << advice.toStdString();
}

TEST_F(DoctorsServers, AGoodWordBeforeAFailureIsNotRepeated) {
    SmtpMailbox mailbox;
    ScriptedServer server(mailbox);
    smtp(QStringLiteral("starttls://") + server.address());
    const Finding finding = findingWith(20321, report.findings);
    EXPECT_FALSE(finding.text.contains(QStringLiteral("has said"))) << finding.text.toStdString();
    EXPECT_TRUE(finding.advice.contains(QStringLiteral("offer STARTTLS"))) << finding.advice.toStdString();
    Pop3Mailbox popMailbox;
    ScriptedServer popServer(popMailbox);
    report = {};
    pop3(QStringLiteral("starttls://") + popServer.address());
    const Finding failed = findingWith(20321, report.findings);
    EXPECT_FALSE(failed.text.contains(QStringLiteral("has said"))) << failed.text.toStdString();
    EXPECT_TRUE(failed.advice.contains(QStringLiteral("offer STLS"))) << failed.advice.toStdString();
}

TEST_F(DoctorsServers, ARefusalIsRepeated) {
    SmtpMailbox mailbox;
    mailbox.answer("GREETING", "554 not you\r\n");
    ScriptedServer server(mailbox);
    smtp(server.address());
    EXPECT_FALSE(findingOf("has said: 554 not you", report.findings).text.isEmpty());
}

TEST_F(DoctorsServers, TheAdministratorIsNotSentToTheAdministrator) {
    SmtpMailbox mailbox;
    ScriptedServer server(mailbox);
    smtp(QStringLiteral("starttls://") + server.address());
    smtp(QStringLiteral("tls://") + server.address());
    ASSERT_THAT(stops(), testing::SizeIs(2));
    EXPECT_TRUE(findingOf("Tell the administrator", report.findings).text.isEmpty());
}

TEST_F(DoctorsServers, AnSmtpServerWithoutAWayThatMayBeUsedStopsMembersWithError20418) {
    SmtpMailbox mailbox;
    mailbox.offers({.mechanisms = {"GSSAPI"}});
    ScriptedServer server(mailbox);
    smtp(server.address(), false);
    EXPECT_EQ(findingWith(20418, report.findings).grade, Grade::Stops);
}

TEST_F(DoctorsServers, ASilentSmtpServerStopsMembersWithError20433) {
    ScriptedServer server(Script{HoldSilent{}});
    smtp(server.address());
    EXPECT_TRUE(findingWith(20433, report.findings).text.contains(QStringLiteral("five minutes")));
    EXPECT_EQ(findingWith(20433, report.findings).grade, Grade::Stops);
}
} // namespace
