// The built program in each row of the troubleshooting table in docs/administrator.md that has to do with a
// server, in the order of the table.

#include "tests/doctor/doctor_program.h"
#include "tests/support/faulty_tls.h"
#include "tests/support/trusted_root.h"

#include <gtest/gtest.h>

namespace {
using support::DoctorProgram;
using support::Ended;
using support::kMet;
using support::kStops;
using support::TlsIdentity;

TEST_F(DoctorProgram, WithAServerThatDoesNotKnowThePassword) {
    popMailbox.allowOnly("ann", "stored otherwise");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(20172, "Password Or User Name Wrong, Please Try Again 20172"), kStops);
}

TEST_F(DoctorProgram, WithAServerThatTakesNoPasswordInClear) {
    popMailbox.offers({.passwordInClear = false});
    fields.POPServer = QStringLiteral("plain://") + popServer.address();
    EXPECT_EQ(examine().grade(20321, "Error 20321 Please start program again"), kStops);
}

TEST_F(DoctorProgram, WithACertificateThatIsNotGoodOrTlsWhereThereIsNone) {
    const support::TrustedRoot root;
    environment.insert(QStringLiteral("SSL_CERT_FILE"), qEnvironmentVariable("SSL_CERT_FILE"));
    const auto ends = [&](const mailserver::Certificate& certificate) {
        popMailbox.tlsFromTheStart(TlsIdentity(certificate));
        fields.POPServer = QStringLiteral("tls://") + popServer.address();
        return examine();
    };
    for (const auto& [name, certificate, error] : support::faultyCertificates()) {
        const std::string box = "Error " + std::to_string(error);
        EXPECT_EQ(ends(certificate).grade(error, box.c_str()), kStops) << name;
    }
    fields.POPServer = QStringLiteral("tls://") + smtpServer.address();
    EXPECT_EQ(examine().grade(20325, "Error 20325"), kStops);
}

TEST_F(DoctorProgram, WithAMailboxThatIsOpenElsewhereOrADelay) {
    popMailbox.answer("PASS", "-ERR [IN-USE] locked\r\n");
    const Ended locked = examine();
    EXPECT_EQ(locked.status, 0);
    EXPECT_EQ(locked.grade(20102, "Cannot Re-Enter Mail Server, Please Try Again 20102"), kMet);
    popMailbox.answer("PASS", "-ERR [LOGIN-DELAY] wait\r\n");
    EXPECT_EQ(examine().grade(20102, "too soon"), kMet);
}

TEST_F(DoctorProgram, WithAServerThatIsNoPop3Server) {
    popMailbox.answer("GREETING", "220 mail.example.org ESMTP\r\n");
    EXPECT_EQ(examine().grade(20302, "There was trouble connecting with the Mail Server."), kStops);
}

TEST_F(DoctorProgram, WithAMisspeltName) {
    fields.POPServer = QStringLiteral("no..name");
    EXPECT_EQ(examine().grade(26002, "Mail Server not found."), kStops);
}

TEST_F(DoctorProgram, WhereNothingListens) {
    const support::RefusingPort refusing;
    fields.POPServer = refusing.address();
    EXPECT_EQ(examine().grade(25062, "Connection refused by host."), kStops);
}

TEST_F(DoctorProgram, WithoutItsLibraries) {
    // A second name in another folder: the libraries are looked for beside it.
    filesystem::create_directories(folder.path("other/bin"));
    filesystem::create_hard_link(support::buildFolder() + "/bin/brindlewake",
                                 folder.path("other/bin/brindlewake"));
    program = folder.qtPath("other/bin/brindlewake");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(25052, "Network is unreachable."), kStops);
    EXPECT_EQ(ended.grade(20325, "libbrindlewake_tls.so"), kStops);
    EXPECT_EQ(ended.grade(482, "libbrindlewake_printing.so"), kMet);
    EXPECT_EQ(ended.grade(53, "libbrindlewake_directory.so"), kMet);
    EXPECT_EQ(run({QStringLiteral("--version")}).status, 0);
}

TEST_F(DoctorProgram, WithASendingServerWithoutAWayThatMayBeUsed) {
    smtpMailbox.offers({.mechanisms = {"GSSAPI"}, .demandsLogOn = true});
    EXPECT_EQ(examine().grade(20418, "Unable to send message. Error# 20418"), kStops);
}

TEST_F(DoctorProgram, WithASendingServerThatDoesNotKnowThePassword) {
    smtpMailbox.offers({.mechanisms = {"PLAIN"}}).allowOnly("ann", "another one");
    EXPECT_EQ(examine().grade(20417, "Unable to send message. Error# 20417"), kStops);
}

TEST_F(DoctorProgram, WithASendingServerThatIsSpelledForAnotherPort) {
    fields.SMTPServer = QStringLiteral("plain://127.0.0.1:465");
    EXPECT_EQ(examine().grade(20433, "Unable to send message. Error# 20433"), kMet);
}

TEST_F(DoctorProgram, WithAMessageThatEndsTheLogIn) {
    popMailbox.deliver(
        "From: eve@example.org\r\nSubject: bad\r\nContent-Type: multipart/mixed; boundary=x\r\n\r\n\r\n");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(5, "Error 5 Please start program again"), kStops);
    EXPECT_EQ(ended.finding(5).value(QStringLiteral("message")).toInt(), 2);
}

TEST_F(DoctorProgram, WithADirectoryThatIsNotThereWhereMembersCanSearchIt) {
    const support::RefusingPort refusing;
    fields.LDAPServer = refusing.address();
    fields.AddressLookup = QStringLiteral("Directory Server");
    fields.ShowDatabase = QStringLiteral("no");
    EXPECT_EQ(examine().json().value(QStringLiteral("servers")).toArray().size(), 2);
    fields.ShowDatabase = QStringLiteral("yes");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.json().value(QStringLiteral("servers")).toArray().size(), 3);
    EXPECT_EQ(ended.grade(25062, "The directory server refused the connection."), kMet);
    fields.AddressLookup = QStringLiteral("directory server");
    EXPECT_EQ(examine().json().value(QStringLiteral("servers")).toArray().size(), 2);
}
} // namespace
