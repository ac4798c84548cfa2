// Encrypted sessions with a real Dovecot.

#include "tests/poplib/pop_fixture.h"
#include "tests/support/dovecot_server.h"
#include "tests/support/occurrences.h"
#include "tests/support/random_bytes.h"
#include "tests/support/recording_relay.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using support::DovecotServer;
using support::RecordingRelay;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
namespace errors = platform::errors;

constexpr const char* kSchemes[] = {"tls://", "starttls://", ""};

class EncryptedDovecot : public support::PopTest {
  protected:
    void SetUp() override {
        if (const std::string reason = DovecotServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        pop.Protected = [this](const transport::Protection& found) { protection = found; };
    }

    /** The name of the server, behind a relay, under which the client speaks to it in this way. */
    QString nameFor(const std::string& scheme, const DovecotServer& server) {
        relay.emplace(scheme == "tls://" ? server.tlsAddress() : server.address());
        return QString::fromStdString(scheme) + relay->address();
    }

    static std::unique_ptr<DovecotServer> serverWithTls() {
        return std::make_unique<DovecotServer>(
            DovecotServer::Options{.certificate = support::trustedCertificate()});
    }

    support::TrustedRoot trustedRoot;
    std::optional<RecordingRelay> relay;
    transport::Protection protection;
};

TEST_F(EncryptedDovecot, EveryWayToEncryptHidesPasswordAndMail) {
    const auto server = serverWithTls();
    server->deliver(support::message("ann"));
    for (const std::string scheme : kSchemes) {
        SCOPED_TRACE(scheme);
        content.clear();
        pop.setMailServer(nameFor(scheme, *server));
        ASSERT_EQ(logOn(), 0) << server->log();
        EXPECT_EQ(pop.messageCount(), 1);
        EXPECT_EQ(retrieve(1, 0), 0);
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(content, testing::Contains(support::describedHeader("Subject", "ann")));
        EXPECT_EQ(protection, (transport::Protection{QStringLiteral("TLS 1.3"), !scheme.empty()}));
        const std::string wire = relay->clientBytes() + relay->serverBytes();
        for (const char* hidden : {"PASS", "secret", "Subject"}) {
            EXPECT_EQ(support::occurrences(wire, hidden), 0U) << hidden;
        }
        EXPECT_EQ(relay->connections(), 1U);
    }
}

TEST_F(EncryptedDovecot, AMessageOfFiveMegabytesArrivesByteForByte) {
    std::string body;
    const std::string line =
        "." + QByteArray::fromStdString(support::randomBytes(54, 3)).toBase64().toStdString();
    while (body.size() < 5'000'000) {
        body += line + std::to_string(body.size()) + "\r\n";
    }
    const auto server = serverWithTls();
    server->deliver("Subject: large\r\n\r\n" + body);
    for (const std::string scheme : kSchemes) {
        SCOPED_TRACE(scheme);
        std::string received;
        pop.Transfer = [&received](std::int32_t /*bytes*/, const std::string& text) {
            received += text + "\r\n";
        };
        pop.setMailServer(nameFor(scheme, *server));
        ASSERT_EQ(logOn(), 0) << server->log();
        EXPECT_EQ(retrieve(1, 0), 0);
        EXPECT_EQ(logOff(), 0);
        EXPECT_TRUE(received == body) << received.size() << " of " << body.size() << " bytes";
    }
}

TEST_F(EncryptedDovecot, ADeletionIsDoneInEncryptedSessions) {
    const auto server = serverWithTls();
    server->deliver(support::message("ann"));
    server->deliver(support::message("carl"));
    pop.setMailServer(nameFor("starttls://", *server));
    ASSERT_EQ(listing(), 0) << server->log();
    ASSERT_EQ(logOn(), 0);
    EXPECT_EQ(remove(1), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(server->messages(), testing::ElementsAre(support::message("carl")));
    EXPECT_EQ(relay->connections(), 2U);
}

TEST_F(EncryptedDovecot, AWrongPasswordIsOneAttemptInEveryWayToEncrypt) {
    const auto server = serverWithTls();
    pop.setLoginPassword("wrong");
    std::size_t attempts = 0;
    for (const std::string scheme : kSchemes) {
        SCOPED_TRACE(scheme);
        pop.setMailServer(nameFor(scheme, *server));
        EXPECT_EQ(logOn(), errors::LogOnRefused);
        EXPECT_EQ(logOff(), 0);
        EXPECT_EQ(relay->connections(), 1U);
        ++attempts;
        EXPECT_EQ(server->refusedAttempts(attempts), attempts) << server->log();
    }
    pop.setLoginPassword("secret");
    EXPECT_EQ(logOn(), 0);
    EXPECT_EQ(logOff(), 0);
}

TEST_F(EncryptedDovecot, WithoutTlsABareNameIsSpokenToInClear) {
    const DovecotServer server;
    server.refusedAttempts(0);
    pop.setMailServer(nameFor("", server));
    ASSERT_EQ(logOn(), 0) << server.log();
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(protection, transport::Protection());
    EXPECT_THAT(relay->clientBytes(), HasSubstr("CAPA\r\nUSER bob\r\nPASS secret\r\n"));
}

TEST_F(EncryptedDovecot, WithoutTlsNothingIsSaidToAServerThatMustEncrypt) {
    const DovecotServer server;
    pop.setMailServer(nameFor("starttls://", server));
    EXPECT_EQ(logOn(), errors::EncryptionNotOffered);
    pop.leave();
    EXPECT_THAT(relay->clientBytes(), testing::StartsWith("CAPA\r\n"));
    EXPECT_THAT(relay->clientBytes(), Not(testing::AnyOf(HasSubstr("USER"), HasSubstr("PASS"))));
    EXPECT_EQ(relay->connections(), 1U);
}

TEST_F(EncryptedDovecot, TlsAtAPortInClearIsAFailedHandshake) {
    const auto server = serverWithTls();
    pop.setMailServer(QStringLiteral("tls://") + server->address());
    EXPECT_EQ(logOn(), errors::EncryptionFailed);
}

TEST_F(EncryptedDovecot, APlainNameIsNeverUpgraded) {
    const auto server = serverWithTls();
    pop.setMailServer(nameFor("plain://", *server));
    ASSERT_EQ(logOn(), 0) << server->log();
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(protection, transport::Protection());
    EXPECT_THAT(relay->serverBytes(), HasSubstr("STLS\r\n"));
    EXPECT_THAT(relay->clientBytes(), Not(HasSubstr("STLS")));
}

TEST_F(EncryptedDovecot, TheSameSessionsFollowOneAnother) {
    const auto server = serverWithTls();
    pop.setMailServer(nameFor("tls://", *server));
    for (int session = 1; session <= 5; ++session) {
        server->deliver(support::message("ann"));
        ASSERT_EQ(listing(), 0) << session << server->log();
        EXPECT_EQ(pop.messageCount(), session);
    }
}

} // namespace
