// Log-ons at a real Dovecot by the mechanisms that hide the password.

#include "tests/poplib/pop_fixture.h"
#include "tests/support/dovecot_server.h"
#include "tests/support/recording_relay.h"
#include "tests/support/shown_password.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using support::DovecotServer;
using support::RecordingRelay;
using support::showsPassword;
using testing::HasSubstr;
using testing::Not;
namespace errors = platform::errors;

/** A mechanism in Dovecot's words, and the command by which the client uses it. */
struct Mechanism {
    const char* name;
    const char* command;
};

constexpr Mechanism kHiding[] = {{"scram-sha-256", "AUTH SCRAM-SHA-256 "},
                                 {"scram-sha-1", "AUTH SCRAM-SHA-1 "},
                                 {"cram-md5", "AUTH CRAM-MD5\r\n"},
                                 {"apop", "APOP bob "}};

class MechanismsAtDovecot : public support::PopTest {
  protected:
    void SetUp() override {
        if (const std::string reason = DovecotServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }

    void startServer(const DovecotServer::Options& options) {
        server = std::make_unique<DovecotServer>(options);
        relay = std::make_unique<RecordingRelay>(server->address());
        pop.setMailServer(QStringLiteral("plain://") + relay->address());
    }

    std::unique_ptr<DovecotServer> server;
    std::unique_ptr<RecordingRelay> relay;
};

TEST_F(MechanismsAtDovecot, EachThatHidesThePasswordLogsOnInClear) {
    for (const auto& [name, command] : kHiding) {
        SCOPED_TRACE(name);
        startServer({.mechanisms = name});
        server->deliver(support::message("ann"));
        ASSERT_EQ(logOn(), 0) << server->log();
        EXPECT_EQ(pop.messageCount(), 1);
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(relay->clientBytes(), HasSubstr(command));
        EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret")) << relay->clientBytes();
        EXPECT_EQ(relay->connections(), 1U);
        EXPECT_EQ(server->refusedAttempts(1), 0U);
    }
}

TEST_F(MechanismsAtDovecot, AWrongPasswordIsOneAttemptInEach) {
    pop.setLoginPassword("mistaken");
    for (const auto& [name, command] : kHiding) {
        SCOPED_TRACE(name);
        // A server that offers all ways must not be asked in another one either.
        startServer({.mechanisms = std::string(name) + " plain login"});
        EXPECT_EQ(logOn(), errors::LogOnRefused) << server->log();
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(relay->clientBytes(), HasSubstr(command));
        EXPECT_FALSE(showsPassword(relay->clientBytes(), "mistaken")) << relay->clientBytes();
        EXPECT_EQ(relay->connections(), 1U);
        EXPECT_EQ(server->refusedAttempts(1), 1U) << server->log();
    }
}

TEST_F(MechanismsAtDovecot, OfAllTheBestIsTaken) {
    startServer({.mechanisms = "plain login cram-md5 apop scram-sha-1 scram-sha-256"});
    ASSERT_EQ(logOn(), 0) << server->log();
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(relay->clientBytes(), HasSubstr("AUTH SCRAM-SHA-256 "));
    EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret"));
}

TEST_F(MechanismsAtDovecot, NamesAndPasswordsWithUmlautsAndSignsLogOn) {
    const DovecotServer::Account account{"j\xC3\xB6rg=,x@example.org", "gr\xC3\xBC\xC3\x9F=,\xE2\x82\xAC 1"};
    pop.setLoginUser(account.user);
    pop.setLoginPassword(account.password);
    for (const auto& [name, command] : kHiding) {
        SCOPED_TRACE(name);
        startServer({.account = account, .mechanisms = name});
        EXPECT_EQ(logOn(), 0) << server->log() << relay->clientBytes() << relay->serverBytes();
        pop.leave();
    }
}

TEST_F(MechanismsAtDovecot, AnEncryptedSessionUsesPlainWhereThereIsNoUser) {
    support::TrustedRoot trustedRoot;
    for (const std::string mechanism : {"plain", "login plain", "scram-sha-256", "scram-sha-1"}) {
        SCOPED_TRACE(mechanism);
        startServer({.certificate = support::trustedCertificate(), .mechanisms = mechanism});
        pop.setMailServer(QStringLiteral("starttls://") + server->address());
        EXPECT_EQ(logOn(), 0) << server->log();
        pop.leave();
    }
}

TEST_F(MechanismsAtDovecot, AServerThatTakesNoPasswordInClearDemandsEncryption) {
    support::TrustedRoot trustedRoot;
    startServer({.certificate = support::trustedCertificate(), .takesPasswordInClear = false});
    EXPECT_EQ(logOn(), errors::EncryptionNotOffered) << server->log();
    EXPECT_EQ(relay->clientBytes(), "CAPA\r\nUSER bob\r\n");
    // It need not be told to encrypt, if it may.
    pop.setMailServer(relay->address());
    EXPECT_EQ(logOn(), 0) << server->log();
    EXPECT_EQ(logOff(), 0);
    EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret"));
}

TEST_F(MechanismsAtDovecot, AServerThatTakesNoPasswordInClearTakesAProof) {
    startServer({.mechanisms = "plain scram-sha-256", .takesPasswordInClear = false});
    EXPECT_EQ(logOn(), 0) << server->log();
    EXPECT_EQ(logOff(), 0);
    EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret"));
}

} // namespace
