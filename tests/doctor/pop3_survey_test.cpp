#include "tests/doctor/findings.h"
#include "tests/doctor/surveyed_servers.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using doctor::Finding;
using doctor::Grade;
using support::Close;
using support::DoctorsServers;
using support::ExpectLine;
using support::findingOf;
using support::findingWith;
using support::Pop3Mailbox;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::TlsIdentity;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kMessage = "From: ann@example.org\r\nSubject: one\r\nDate: today\r\n\r\nbody\r\n";

TEST_F(DoctorsServers, AGoodPop3ServerIsToldWithAllThatItIs) {
    Pop3Mailbox mailbox({kMessage, kMessage});
    mailbox.offers({.mechanisms = {"SCRAM-SHA-256"}, .utf8 = true})
        .tlsFromTheStart(TlsIdentity(support::trustedCertificate()));
    ScriptedServer server(mailbox);
    pop3(QStringLiteral("tls://localhost:%1").arg(server.port()));
    EXPECT_THAT(stops(), IsEmpty());
    EXPECT_EQ(seen().protocol, QStringLiteral("POP3"));
    EXPECT_EQ(seen().host, QStringLiteral("localhost"));
    ASSERT_FALSE(seen().addresses.empty());
    EXPECT_EQ(seen().greeting, QStringLiteral("ready"));
    EXPECT_TRUE(seen().encryption.startsWith(QStringLiteral("TLS 1.")));
    ASSERT_TRUE(seen().certificate);
    EXPECT_TRUE(seen().certificate->isValid);
    EXPECT_TRUE(seen().certificate->names.contains(QStringLiteral("localhost")));
    EXPECT_FALSE(seen().certificate->validUntil.isEmpty());
    EXPECT_TRUE(seen().offers.contains(QStringLiteral("UTF8")));
    for (const char* const used : {"TOP", "UIDL", "UTF8", "SCRAM-SHA-256"}) {
        EXPECT_TRUE(seen().uses.contains(QLatin1String(used))) << used;
    }
    EXPECT_EQ(seen().logOn, QStringLiteral("accepted"));
    EXPECT_EQ(seen().messages, 2);
    EXPECT_GT(seen().bytes.value_or(0), 0);
    EXPECT_TRUE(seen().milliseconds);
}

TEST_F(DoctorsServers, NothingIsFetchedWholeOrDeleted) {
    Pop3Mailbox mailbox({kMessage, kMessage, kMessage});
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_THAT(server.keywords(), Contains("TOP").Times(3));
    EXPECT_THAT(server.keywords(), Contains("PASS").Times(1));
    EXPECT_THAT(server.keywords(), Not(Contains("RETR")));
    EXPECT_THAT(server.keywords(), Not(Contains("DELE")));
    EXPECT_EQ(mailbox.messages().size(), 3U);
}

TEST_F(DoctorsServers, WithoutAMemberNobodyLogsOn) {
    Pop3Mailbox mailbox({kMessage});
    ScriptedServer server(mailbox);
    pop3(server.address(), false);
    EXPECT_THAT(server.keywords(), Not(Contains("USER")));
    EXPECT_EQ(seen().greeting, QStringLiteral("ready"));
    EXPECT_TRUE(seen().logOn.isEmpty());
    EXPECT_FALSE(seen().messages);
}

TEST_F(DoctorsServers, WhereTopIsRefusedTheSizesServeAndItIsTold) {
    Pop3Mailbox mailbox({kMessage, kMessage});
    mailbox.answer("TOP", "-ERR unknown command\r\n");
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_THAT(server.keywords(), Not(Contains("RETR")));
    EXPECT_TRUE(
        findingOf("refuses TOP for 2 of 2", report.findings).text.contains(QStringLiteral("only the sizes")));
    EXPECT_THAT(stops(), IsEmpty());
}

TEST_F(DoctorsServers, AMessageThatEndsTheLogInIsFoundAndTheOthersAreLookedAtAllTheSame) {
    Pop3Mailbox mailbox(
        {kMessage,
         "From: eve@example.org\r\nSubject: bad\r\nContent-Type: multipart/mixed; boundary=x\r\n\r\n\r\n",
         "From: ann@example.org\r\nSubject: =?utf-8?Q?=C3=BC?=\r\nDate: today\r\n\r\nbody\r\n"});
    ScriptedServer server(mailbox);
    pop3(server.address());
    const Finding bad = findingWith(5, report.findings);
    EXPECT_EQ(bad.grade, Grade::Stops);
    EXPECT_EQ(bad.message, 2);
    EXPECT_EQ(bad.subject, QStringLiteral("bad"));
    EXPECT_EQ(findingOf("shown encoded", report.findings).message, 3);
}

TEST_F(DoctorsServers, InTheStandardWayItDoesNotStopTheLogIn) {
    Pop3Mailbox mailbox({"From: eve@example.org\r\nContent-Type: multipart/mixed; boundary=x\r\n\r\n\r\n"});
    ScriptedServer server(mailbox);
    pop3(server.address(), true, MailMode::Standard);
    EXPECT_THAT(stops(), IsEmpty());
}

TEST_F(DoctorsServers, MoreThan200MessagesEndTheLogInWithError9) {
    Pop3Mailbox mailbox(std::vector<std::string>(201, kMessage));
    ScriptedServer server(mailbox);
    pop3(server.address());
    const Finding finding = findingWith(9, report.findings);
    EXPECT_EQ(finding.grade, Grade::Stops);
    EXPECT_EQ(finding.box, QStringLiteral("Error 9 Please start program again "));
    EXPECT_TRUE(finding.text.contains(QStringLiteral("201 messages")));
}

TEST_F(DoctorsServers, OfALargeMessageAMegabyteIsLookedAt) {
    std::string large = "From: ann@example.org\r\nSubject: large\r\nDate: today\r\n\r\n";
    while (large.size() < (3U << 20U)) {
        large += std::string(76, 'x') + "\r\n";
    }
    Pop3Mailbox mailbox({large});
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_LT(server.bytesSent(), 3U << 19U);
    EXPECT_FALSE(findingOf("32000 bytes", report.findings).text.isEmpty());
}

TEST_F(DoctorsServers, APasswordIsNeverRepeated) {
    Pop3Mailbox mailbox({kMessage});
    mailbox.answer("PASS", "-ERR wrong password " + member.password + "\r\n");
    mailbox.answer("GREETING", "+OK hello " + member.password + "\r\n");
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_FALSE(QString::fromUtf8(asJson(report)).contains(QString::fromStdString(member.password)));
    EXPECT_FALSE(asText(report).contains(QString::fromStdString(member.password)));
    EXPECT_TRUE(asText(report).contains(QStringLiteral("****")));
}

TEST_F(DoctorsServers, ARefusedPasswordStopsMembersWithError20172) {
    Pop3Mailbox mailbox;
    mailbox.allowOnly("bob", "other");
    ScriptedServer server(mailbox);
    pop3(server.address());
    const Finding finding = findingWith(20172, report.findings);
    EXPECT_EQ(finding.grade, Grade::Stops);
    EXPECT_EQ(finding.box, QStringLiteral("Password Or User Name Wrong, Please Try Again 20172"));
    EXPECT_EQ(seen().logOn, QStringLiteral("refused"));
}

TEST_F(DoctorsServers, ALogInDelayIsMetWhetherItIsAnnouncedOrFelt) {
    Pop3Mailbox mailbox;
    mailbox.answer("CAPA", "+OK\r\nTOP\r\nUSER\r\nLOGIN-DELAY 60 USER\r\n.\r\n");
    mailbox.answer("PASS", "-ERR [LOGIN-DELAY] minimum time between mail checks violation\r\n");
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_THAT(stops(), IsEmpty());
    const Finding announced = findingOf("every 60 seconds", report.findings);
    EXPECT_EQ(announced.grade, Grade::Met);
    EXPECT_EQ(announced.number, 20102);
    EXPECT_EQ(announced.box, QStringLiteral("Cannot Re-Enter Mail Server, Please Try Again 20102"));
    EXPECT_EQ(findingOf("too soon", report.findings).number, 20102);
}

TEST_F(DoctorsServers, ALockedMailboxIsMet) {
    Pop3Mailbox mailbox;
    mailbox.answer("PASS", "-ERR [IN-USE] another session\r\n");
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_THAT(stops(), IsEmpty());
    EXPECT_EQ(findingWith(20102, report.findings).grade, Grade::Met);
    EXPECT_TRUE(findingWith(20102, report.findings).text.contains(QStringLiteral("locked")));
}

TEST_F(DoctorsServers, AServerThatTakesNoPasswordInClearStopsMembersWithoutALogOnToo) {
    Pop3Mailbox mailbox;
    mailbox.offers({.passwordInClear = false});
    ScriptedServer server(mailbox);
    pop3(QStringLiteral("plain://") + server.address(), false);
    EXPECT_EQ(findingWith(20321, report.findings).grade, Grade::Stops);
}

TEST_F(DoctorsServers, WhatIsNoServerHasItsNumber) {
    const support::RefusingPort refusing;
    pop3(refusing.address());
    EXPECT_EQ(findingWith(25062, report.findings).box, QStringLiteral("Connection refused by host."));
    EXPECT_FALSE(seen().addresses.front().problem.isEmpty());
    ScriptedServer broken(Script{Close{}});
    pop3(broken.address());
    EXPECT_EQ(findingWith(20302, report.findings).box,
              QStringLiteral("There was trouble connecting with the Mail Server."));
    pop3(QStringLiteral("no..name"));
    EXPECT_EQ(findingWith(26002, report.findings).box, QStringLiteral("Mail Server not found."));
    ScriptedServer inClear(Script{Send{"+OK ready\r\n"}, ExpectLine{}});
    pop3(QStringLiteral("tls://") + inClear.address());
    EXPECT_EQ(findingWith(20325, report.findings).grade, Grade::Stops);
}
} // namespace
