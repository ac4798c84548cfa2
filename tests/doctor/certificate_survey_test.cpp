#include "tests/doctor/findings.h"
#include "tests/doctor/surveyed_servers.h"
#include "tests/support/faulty_tls.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using doctor::Grade;
using support::DoctorsServers;
using support::findingOf;
using support::findingWith;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::TlsIdentity;
using testing::IsEmpty;

TEST_F(DoctorsServers, ACertificateThatIsNotGoodIsToldWithTheReason) {
    for (const auto& [name, certificate, error] : support::faultyCertificates()) {
        report = {};
        Pop3Mailbox mailbox;
        mailbox.tlsFromTheStart(TlsIdentity(certificate));
        ScriptedServer server(mailbox);
        pop3(QStringLiteral("tls://") + server.address());
        EXPECT_EQ(findingWith(error, report.findings).grade, Grade::Stops) << name;
        ASSERT_TRUE(seen().certificate) << name;
        EXPECT_FALSE(seen().certificate->isValid) << name;
        EXPECT_FALSE(seen().certificate->reason.isEmpty()) << name;
        EXPECT_FALSE(seen().certificate->subject.isEmpty()) << name;
    }
}

TEST_F(DoctorsServers, ACertificateThatNobodyLooksAtIsToldAllTheSame) {
    const mailserver::Authority stranger("A stranger");
    Pop3Mailbox mailbox;
    mailbox.offers({.stls = true}).encryptsWith(TlsIdentity(stranger.issue(support::loopback())));
    ScriptedServer server(mailbox);
    pop3(server.address());
    EXPECT_THAT(stops(), IsEmpty());
    ASSERT_TRUE(seen().certificate);
    EXPECT_FALSE(seen().certificate->isValid);
    EXPECT_TRUE(seen().certificate->reason.contains(QStringLiteral("nobody whom this computer trusts")));
    EXPECT_EQ(seen().logOn, QStringLiteral("accepted"));
}

TEST_F(DoctorsServers, ACertificateThatEndsSoonIsMet) {
    Pop3Mailbox mailbox;
    mailbox.tlsFromTheStart(TlsIdentity(support::trustedCertificate()));
    ScriptedServer server(mailbox);
    pop3(QStringLiteral("tls://") + server.address());
    EXPECT_EQ(findingOf("is valid until", report.findings).grade, Grade::Met);
}
} // namespace
