// Mail through a real Exim: encrypted, with a log-on, or refused without.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/exim_server.h"
#include "tests/support/occurrences.h"
#include "tests/support/random_bytes.h"
#include "tests/support/recording_relay.h"
#include "tests/support/shown_password.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <utility>

namespace {

using support::EximServer;
using support::RecordingRelay;
using support::showsPassword;
using testing::HasSubstr;
using testing::Not;
namespace errors = platform::errors;

constexpr const char* kEximSchemes[] = {"tls://", "starttls://", ""};

class EncryptedExim : public support::SmtpTest {
  protected:
    void SetUp() override {
        if (const std::string reason = EximServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        for (const char* name : {"box", "box/cur", "box/new", "box/tmp"}) {
            std::filesystem::create_directory(folder.path(name));
            std::filesystem::permissions(folder.path(name), std::filesystem::perms::all);
        }
        smtp.Protected = [this](const transport::Protection& found) { protection = found; };
        smtp.setAccount({"bob", "secret", {}});
    }

    void startServer(const EximServer::Options& options) {
        server.reset();
        server = std::make_unique<EximServer>(folder.path("box"), options);
    }

    void startServerWithTls(EximServer::Options options) {
        options.certificate = support::trustedCertificate();
        startServer(options);
    }

    /** Sends a message to Ann, through a relay, and returns the error. */
    int sendTo(const std::string& scheme, const std::string& body = "text\r\n") {
        relay =
            std::make_unique<RecordingRelay>(scheme == "tls://" ? server->tlsAddress() : server->address());
        smtp.setHost(QString::fromStdString(scheme) + relay->address());
        smtp.setSender("bob@example.org");
        smtp.setRecipients("ann@example.org");
        smtp.setSubject("Hello");
        smtp.setBody(body);
        return send();
    }

    std::string onlyMessage() const {
        EXPECT_EQ(server->awaitMessages(1), 1U) << server->log();
        for (const auto& entry : std::filesystem::directory_iterator(folder.path("box/new"))) {
            return folder.read("box/new/" + entry.path().filename().string());
        }
        return {};
    }

    support::TrustedRoot trustedRoot;
    support::TemporaryFolder folder;
    std::unique_ptr<EximServer> server;
    std::unique_ptr<RecordingRelay> relay;
    transport::Protection protection;
};

TEST_F(EncryptedExim, EveryWayToEncryptHidesPasswordAndMail) {
    startServerWithTls({.account = support::EximAccount(), .answerToStrangers = "550 5.7.1 log on first"});
    std::size_t sent = 0;
    for (const std::string scheme : kEximSchemes) {
        SCOPED_TRACE(scheme);
        ASSERT_EQ(sendTo(scheme), 0) << server->log();
        ++sent;
        EXPECT_EQ(server->awaitMessages(sent), sent) << server->log();
        EXPECT_EQ(protection, (transport::Protection{QStringLiteral("TLS 1.3"), !scheme.empty()}));
        EXPECT_EQ(relay->connections(), 1U);
        const std::string wire = relay->clientBytes();
        for (const char* hidden : {"MAIL", "AUTH", "Subject"}) {
            EXPECT_EQ(support::occurrences(wire, hidden), 0U) << hidden;
        }
        EXPECT_FALSE(showsPassword(wire, "secret"));
    }
    EXPECT_THAT(server->log(), HasSubstr("A=by_PLAIN:bob"));
    EXPECT_EQ(server->refusedAttempts(), 0U);
}

TEST_F(EncryptedExim, AMessageOfFiveMegabytesArrivesByteForByte) {
    std::string body;
    const std::string line =
        "." + QByteArray::fromStdString(support::randomBytes(54, 3)).toBase64().toStdString();
    while (body.size() < 5'000'000) {
        body += line + std::to_string(body.size()) + "\r\n";
    }
    startServerWithTls({});
    ASSERT_EQ(sendTo("starttls://", body), 0) << server->log();
    std::string expected = body;
    expected.erase(std::remove(expected.begin(), expected.end(), '\r'), expected.end());
    const std::string message = onlyMessage();
    EXPECT_TRUE(message.ends_with("\n\n" + expected)) << message.size() << " bytes";
}

TEST_F(EncryptedExim, EachMechanismLogsOnOverTls) {
    for (const auto& [mechanism, log] : {std::pair("PLAIN", "A=by_PLAIN:bob"),
                                         {"LOGIN", "A=by_LOGIN:bob"},
                                         {"CRAM-MD5", "A=by_CRAM_MD5:bob"}}) {
        SCOPED_TRACE(mechanism);
        startServerWithTls({.account = support::EximAccount(),
                            .mechanisms = mechanism,
                            .logOnNeedsTls = true,
                            .answerToStrangers = "530 5.7.0 Authentication required"});
        EXPECT_EQ(sendTo("starttls://"), 0) << server->log();
        server->awaitMessages(1);
        EXPECT_THAT(server->log(), HasSubstr(log));
    }
}

TEST_F(EncryptedExim, InClearAProofIsPreferredToThePassword) {
    startServer(
        {.account = support::EximAccount(), .answerToStrangers = "530 5.7.0 Authentication required"});
    EXPECT_EQ(sendTo(""), 0) << server->log();
    EXPECT_THAT(relay->clientBytes(), HasSubstr("AUTH CRAM-MD5\r\n"));
    EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret")) << relay->clientBytes();
    EXPECT_EQ(protection, transport::Protection());
}

TEST_F(EncryptedExim, AWrongPasswordIsOneAttemptAndTheSendersFault) {
    smtp.setAccount({"bob", "mistaken", {}});
    std::size_t attempts = 0;
    startServerWithTls({.account = support::EximAccount(), .answerToStrangers = "550 5.7.1 log on first"});
    for (const std::string scheme : kEximSchemes) {
        SCOPED_TRACE(scheme);
        EXPECT_EQ(sendTo(scheme), errors::SendingLogOnRefused) << server->log();
        EXPECT_EQ(relay->connections(), 1U);
        ++attempts;
        EXPECT_EQ(server->refusedAttempts(), attempts) << server->log();
    }
    EXPECT_EQ(server->messagesInQueue(), 0U);
}

TEST_F(EncryptedExim, AWrongPasswordDoesNotMatterWhereTheMailIsTakenAllTheSame) {
    smtp.setAccount({"bob", "mistaken", {}});
    startServerWithTls({.account = support::EximAccount()});
    EXPECT_EQ(sendTo("tls://"), 0) << server->log();
    EXPECT_EQ(server->refusedAttempts(), 1U);
    EXPECT_EQ(server->awaitMessages(1), 1U);
}

TEST_F(EncryptedExim, TheNameWithTheHostIsTriedWhereTheBareOneIsRefused) {
    smtp.setAccount({"bob", "secret", "bob@example.org"});
    startServerWithTls({.account = support::EximAccount{"bob@example.org", "secret"},
                        .answerToStrangers = "550 5.7.1 log on first"});
    EXPECT_EQ(sendTo("starttls://"), 0) << server->log();
    EXPECT_EQ(server->refusedAttempts(), 1U);
    server->awaitMessages(1);
    EXPECT_THAT(server->log(), HasSubstr("A=by_PLAIN:bob@example.org"));
}

TEST_F(EncryptedExim, AServerThatDemandsEncryptionInClearIsSaidToDoSo) {
    startServerWithTls({.account = support::EximAccount(),
                        .logOnNeedsTls = true,
                        .answerToMailInClear = "530 5.7.0 Must issue a STARTTLS command first"});
    EXPECT_EQ(sendTo("plain://"), errors::EncryptionNotOffered) << server->log();
    EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret"));
    EXPECT_EQ(sendTo(""), 0) << server->log();
}

TEST_F(EncryptedExim, ALogOnThatIsDemandedAndNotOfferedInClearIsImpossible) {
    for (const std::string answer : {"530 5.7.0 Authentication required", "550 5.7.1 relaying denied",
                                     "554 5.7.1 <ann@example.org>: Relay access denied"}) {
        SCOPED_TRACE(answer);
        startServerWithTls(
            {.account = support::EximAccount(), .logOnNeedsTls = true, .answerToStrangers = answer});
        EXPECT_EQ(sendTo("plain://"), errors::SendingLogOnImpossible) << server->log();
        EXPECT_FALSE(showsPassword(relay->clientBytes(), "secret"));
        EXPECT_EQ(sendTo("starttls://"), 0) << server->log();
    }
}

TEST_F(EncryptedExim, WithoutTlsNothingIsSentToAServerThatMustEncrypt) {
    startServer({});
    EXPECT_EQ(sendTo("starttls://"), errors::EncryptionNotOffered);
    EXPECT_THAT(relay->clientBytes(), Not(HasSubstr("MAIL")));
    EXPECT_EQ(sendTo(""), 0) << server->log();
    EXPECT_EQ(protection, transport::Protection());
}

TEST_F(EncryptedExim, TlsAtAPortInClearIsAFailedHandshake) {
    startServerWithTls({});
    smtp.setHost(QStringLiteral("tls://") + server->address());
    EXPECT_EQ(open(), errors::EncryptionFailed);
}

} // namespace
