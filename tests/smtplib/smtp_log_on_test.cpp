// Logging on to send, at the component: which names and mechanisms reach the server, what is told when it
// refuses, and what nobody is told.

#include "components/sasl/base64.h"
#include "tests/sasl/repeated_secrets.h"
#include "tests/sasl/scram_server.h"
#include "tests/smtplib/encrypted_smtp_fixture.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using support::overTls;
using support::Peer;
using support::ScriptedServer;
using support::validIdentity;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
namespace errors = platform::errors;

constexpr const char* kAnnsPlain = "AUTH PLAIN AGJvYgBzZWNyZXQ=";
constexpr const char* kOthersPlain = "AUTH PLAIN AGJvYkBleGFtcGxlLm9yZwBzZWNyZXQ=";

class SmtpLogOnAtAServer : public support::EncryptedSmtpTest {
  protected:
    SmtpLogOnAtAServer() { offer("PLAIN"); }

    void offer(const std::string& mechanisms) {
        mailbox.answer("EHLO", "250-mail\r\n250-SIZE\r\n250 AUTH " + mechanisms + "\r\n");
    }

    /** The lines of the client's that belong to the log-on. */
    static std::vector<std::string> logOns(const ScriptedServer& server) {
        std::vector<std::string> lines;
        for (const std::string& line : server.commands()) {
            if (line.starts_with("AUTH ")) {
                lines.push_back(line);
            }
        }
        return lines;
    }
};

TEST_F(SmtpLogOnAtAServer, ComesBeforeTheMessage) {
    mailbox.answer("AUTH", "235 in\r\n");
    ScriptedServer server(overTls(validIdentity(), mailbox));
    EXPECT_EQ(send(server, "tls://"), 0);
    EXPECT_EQ(server.commands().at(1), kAnnsPlain);
    EXPECT_THAT(server.commands().at(2), StartsWith("MAIL "));
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}

TEST_F(SmtpLogOnAtAServer, IsLeftOutWithoutAName) {
    smtp.setAccount({});
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server, ""), 0);
    EXPECT_THAT(logOns(server), IsEmpty());
}

TEST_F(SmtpLogOnAtAServer, ThatIsRefusedDoesNotKeepTheMessageBack) {
    mailbox.answer("AUTH", "535 5.7.8 wrong\r\n");
    smtp.setAccount({"bob", "secret", "bob@example.org"});
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server, ""), 0);
    EXPECT_THAT(logOns(server), ElementsAre(kAnnsPlain, kOthersPlain));
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}

TEST_F(SmtpLogOnAtAServer, ThatIsRefusedTellsWhyTheMessageIsRefused) {
    mailbox.answer("AUTH", "535 5.7.8 wrong\r\n").answer("RCPT", "550 relay not permitted\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server, ""), errors::SendingLogOnRefused);
    mailbox.answer("RCPT", "450 later\r\n");
    EXPECT_EQ(send(), errors::SendingLogOnRefusedForNow);
    mailbox.answer("AUTH", "454 later\r\n").answer("RCPT", "550 relay not permitted\r\n");
    EXPECT_EQ(send(), errors::SendingLogOnRefusedForNow);
    mailbox.answer("AUTH", "235 in\r\n");
    EXPECT_EQ(send(), errors::RecipientRefused);
    EXPECT_THAT(mailbox.messages(), IsEmpty());
}

TEST_F(SmtpLogOnAtAServer, AHangUpBehindTheRefusalIsTheRefusal) {
    mailbox.on("AUTH", [](Peer& peer) {
        peer.send("535 5.7.8 wrong\r\n");
        peer.close();
    });
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server, ""), errors::SendingLogOnRefused);
    // Also when it was noticed before anything else was said.
    ASSERT_EQ(open(), 0);
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connectionsEnded() == 2; }));
    EXPECT_EQ(transmit(), errors::SendingLogOnRefused);
    EXPECT_EQ(transmit(), errors::SendingLost) << "no session is open any more";
    mailbox.on("AUTH", [](Peer& peer) {
        peer.send("454 later\r\n");
        peer.close();
    });
    EXPECT_EQ(send(), errors::SendingLogOnRefusedForNow);
    mailbox.on("AUTH", [](Peer& peer) { peer.close(); });
    EXPECT_EQ(send(), errors::SendingLost);
}

TEST_F(SmtpLogOnAtAServer, ThatIsDemandedAndImpossibleHasANumberOfItsOwn) {
    offer("XOAUTH2");
    mailbox.answer("MAIL", "530 5.7.0 Authentication required\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server, ""), errors::SendingLogOnImpossible);
    mailbox.answer("MAIL", "530 5.7.0 Must issue a STARTTLS command first\r\n");
    EXPECT_EQ(send(), errors::EncryptionNotOffered);
    EXPECT_THAT(logOns(server), IsEmpty());
}

TEST_F(SmtpLogOnAtAServer, AServerThatDoesNotKnowThePasswordIsLeftAtOnce) {
    // It has another password's keys, and accepts every proof.
    ScriptedServer server([](Peer& peer) {
        peer.send("220 mail\r\n");
        peer.readLine();
        peer.send("250-mail\r\n250 AUTH PLAIN SCRAM-SHA-256\r\n");
        const std::string first = peer.readLine().substr(std::string_view("AUTH SCRAM-SHA-256 ").size());
        support::ScramServer scram(QCryptographicHash::Sha256, "another", {});
        peer.send("334 " + sasl::toBase64(scram.firstMessage(sasl::fromBase64(first).value_or(""))) + "\r\n");
        const std::string proof = sasl::fromBase64(peer.readLine()).value_or("");
        peer.send("334 " + sasl::toBase64(scram.signature(proof)) + "\r\n");
        peer.readLine();
        peer.send("235 in\r\n");
        peer.readLine();
    });
    EXPECT_EQ(send(server, ""), errors::LogOnRefused);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_THAT(server.commands(), Contains("*"));
    for (const std::string& line : server.commands()) {
        EXPECT_FALSE(line.starts_with("MAIL") || line.starts_with("AUTH PLAIN")) << line;
    }
}

constexpr const char* kPassword = "Open, Sesame!";

/** A server with one mechanism, whose every reply repeats all that the client has said and the password. */
support::Conversation repeating(const std::string& mechanism, const std::string& status) {
    return [mechanism, status](Peer& peer) {
        peer.send("220 Open, Sesame!\r\n");
        for (std::string line = peer.readLine(); line != "QUIT"; line = peer.readLine()) {
            std::string said = line;
            if (line.starts_with("EHLO ")) {
                peer.send("250-Open, Sesame!\r\n250 AUTH " + mechanism + "\r\n");
                continue;
            }
            if (line.starts_with("AUTH ")) {
                said += ' ' + support::playMechanism(peer, line, "334 ", kPassword);
            }
            const std::string code = line.starts_with("AUTH ") ? status : "550";
            for (const std::string& form : support::formsOf(kPassword)) {
                said += " " + form;
            }
            peer.send(code + '-' + said + "\r\n" + code + ' ' + said + "\r\n");
        }
        peer.send(std::string("221 ") + kPassword + "\r\n");
    };
}

class SmtpSecrets : public support::EncryptedSmtpTest, public testing::WithParamInterface<const char*> {};

TEST_P(SmtpSecrets, StandInNoTrailWhateverTheServerRepeats) {
    smtp.setAccount({"bob", kPassword, {}});
    for (const char* const status : {"235", "535", "454"}) {
        SCOPED_TRACE(status);
        ScriptedServer server(repeating(GetParam(), status));
        EXPECT_NE(send(server, ""), 0);
        EXPECT_THAT(trail, Contains(testing::HasSubstr("****")));
        EXPECT_THAT(support::linesThatTell(trail, kPassword), IsEmpty());
        EXPECT_THAT(server.commands(), Contains(StartsWith(std::string("AUTH ") + GetParam())));
        EXPECT_THAT(server.commands(), Contains(StartsWith("MAIL ")));
    }
}

INSTANTIATE_TEST_SUITE_P(Mechanisms, SmtpSecrets,
                         testing::Values("SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN", "LOGIN"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::erase(name, '-');
                             return name;
                         });

} // namespace
