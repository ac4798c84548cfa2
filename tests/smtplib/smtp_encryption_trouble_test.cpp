// STARTTLS that does not end in an encrypted connection: nothing of the message is then said in clear.

#include "tests/smtplib/encrypted_smtp_fixture.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace std::chrono_literals;
using support::BadAnswer;
using support::overTls;
using support::Peer;
using support::saying;
using support::ScriptedServer;
using support::TlsIdentity;
using support::validIdentity;
using testing::AnyOf;
using testing::IsEmpty;
namespace errors = platform::errors;

class SmtpEncryptionTrouble : public support::EncryptedSmtpTest {};

TEST_F(SmtpEncryptionTrouble, NothingCountsThatStandsBehindTheInvitation) {
    for (const char* const answer :
         {"220 go\r\n250 extra\r\n", "220 go\r\n250-mail\r\n", "220-go\r\n220 on\r\n2"}) {
        const auto ways = support::inPiecesOfAllKinds(answer);
        for (const char* const scheme : kUpgrading) {
            for (std::size_t way = 0; way < ways.size(); ++way) {
                SCOPED_TRACE(testing::Message() << scheme << ' ' << answer << ' ' << way);
                mailbox.on("STARTTLS", [say = ways[way], identity = validIdentity()](Peer& peer) {
                    say(peer);
                    peer.beginTls(identity);
                });
                ScriptedServer server(mailbox);
                EXPECT_EQ(send(server, scheme), errors::EncryptionFailed);
                expectOnlyClearCommands(server, {"EHLO", "STARTTLS"});
            }
        }
    }
    EXPECT_THAT(protections, IsEmpty());
}

TEST_F(SmtpEncryptionTrouble, AnAnswerThatCameInClearIsNoneToACommandThatIsEncrypted) {
    // Behind the client's first flight, where it waits for the server's.
    mailbox.on("STARTTLS", [](Peer& peer) {
        peer.send("220 go ahead\r\n");
        peer.readLine();
        peer.send("250 mail\r\n250 ok\r\n250 ok\r\n250 ok\r\n354 go on\r\n250 sent\r\n");
        peer.holdSilent();
    });
    waitNoLongerThan(300ms);
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        EXPECT_EQ(send(server, scheme), errors::EncryptionFailed);
        expectOnlyClearCommands(server, {"EHLO", "STARTTLS"});
    }
}

TEST_F(SmtpEncryptionTrouble, NothingCountsThatStandsBehindTheRefusal) {
    const std::string answer = "454 not now\r\n250 extra\r\n";
    for (const char* const scheme : kUpgrading) {
        for (std::size_t bytes = 1; bytes <= answer.size(); ++bytes) {
            SCOPED_TRACE(testing::Message() << scheme << ' ' << bytes);
            const bool inOnePiece = bytes == answer.size();
            mailbox.on("STARTTLS", [&answer, bytes](Peer& peer) { peer.send(answer, bytes); });
            ScriptedServer server(mailbox);
            const int error = send(server, scheme);
            // What comes late is not seen by a client that has left.
            const int late = *scheme == '\0' ? 0 : errors::EncryptionNotOffered;
            EXPECT_THAT(error, AnyOf(errors::EncryptionFailed, inOnePiece ? errors::EncryptionFailed : late));
            EXPECT_TRUE(server.waitForEndOf(server.connections()));
            for (const std::string& line : server.commands(0)) {
                EXPECT_FALSE(line.starts_with("MAIL") || line.starts_with("AUTH")) << line;
            }
            EXPECT_EQ(server.connections(), error == 0 ? 2U : 1U);
        }
    }
}

class BadAnswerToStartTls : public SmtpEncryptionTrouble, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadAnswerToStartTls, EndsTheSendingWhateverTheSpelling) {
    mailbox.on("STARTTLS", GetParam().answer);
    waitNoLongerThan(200ms);
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        EXPECT_EQ(send(server, scheme), errors::EncryptionFailed);
        expectOnlyClearCommands(server, {"EHLO", "STARTTLS"});
    }
    EXPECT_THAT(protections, IsEmpty());
    EXPECT_THAT(mailbox.messages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Answers, BadAnswerToStartTls,
    testing::Values(BadAnswer{"Words", saying("what?\r\n")}, BadAnswer{"EmptyLine", saying("\r\n")},
                    BadAnswer{"Intermediate", saying("354 go on\r\n")},
                    BadAnswer{"NoDigit", saying("650 go\r\n")},
                    BadAnswer{"DifferingCodes", saying("220-go\r\n250 on\r\n")},
                    BadAnswer{"OtherProtocol", saying("+OK go\r\n")},
                    BadAnswer{"Encrypted", saying(std::string("\x16\x03\x03\0\x02\x02\n", 7))},
                    BadAnswer{"EndlessLine", saying(std::string(100'000, 'x'))},
                    BadAnswer{"Nothing", saying("", &Peer::holdSilent)},
                    BadAnswer{"HalfALine", saying("220 go", &Peer::holdSilent)},
                    BadAnswer{"HalfAReply", saying("220-go\r\n", &Peer::holdSilent)},
                    BadAnswer{"HangUp", saying("", &Peer::close)},
                    BadAnswer{"HangUpInTheReply", saying("220-go\r\n220", &Peer::close)},
                    BadAnswer{"HangUpBehindIt", saying("220 go\r\n", &Peer::close)},
                    BadAnswer{"Reset", saying("", &Peer::reset)},
                    BadAnswer{"ResetBehindIt", saying("220 go\r\n", &Peer::reset)},
                    BadAnswer{"SilenceBehindIt", saying("220 go\r\n", &Peer::holdSilent)}),
    [](const auto& test) { return test.param.name; });

TEST_F(SmtpEncryptionTrouble, ABrokenHandshakeEndsTheSendingWhateverTheSpelling) {
    waitNoLongerThan(200ms);
    for (const support::TlsOptions& options : support::brokenHandshakes()) {
        const TlsIdentity identity = validIdentity(options);
        inviteToTls(identity);
        for (const char* const scheme : kUpgrading) {
            ScriptedServer server(mailbox);
            EXPECT_EQ(send(server, scheme), errors::EncryptionFailed);
            expectOnlyClearCommands(server, {"EHLO", "STARTTLS"});
        }
        ScriptedServer server(overTls(identity, mailbox));
        EXPECT_EQ(send(server, "tls://"), errors::EncryptionFailed);
        expectOnlyClearCommands(server, {});
    }
    EXPECT_THAT(protections, IsEmpty());
    EXPECT_THAT(mailbox.messages(), IsEmpty());
}

} // namespace
