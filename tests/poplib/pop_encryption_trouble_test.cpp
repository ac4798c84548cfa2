// STLS that does not end in an encrypted connection: nothing of the password is then said in clear.

#include "tests/poplib/encrypted_pop_fixture.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

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
using testing::ElementsAre;
using testing::IsEmpty;
namespace errors = platform::errors;

class PopEncryptionTrouble : public support::EncryptedPopTest, public support::InsideAWait {};

TEST_F(PopEncryptionTrouble, NothingCountsThatStandsBehindTheInvitation) {
    const auto ways = support::inPiecesOfAllKinds("+OK begin\r\n+OK extra\r\n");
    for (const char* const scheme : kUpgrading) {
        for (std::size_t way = 0; way < ways.size(); ++way) {
            SCOPED_TRACE(testing::Message() << scheme << ' ' << way);
            mailbox.on("STLS", [say = ways[way], identity = validIdentity()](Peer& peer) {
                say(peer);
                peer.beginTls(identity);
            });
            ScriptedServer server(mailbox);
            EXPECT_EQ(logOn(server, scheme), errors::EncryptionFailed);
            expectOnlyClearCommands(server, {"CAPA", "STLS"});
        }
    }
    EXPECT_THAT(protections, IsEmpty());
}

TEST_F(PopEncryptionTrouble, AnAnswerThatCameInClearIsNoneToACommandThatIsEncrypted) {
    // Behind the client's first flight, where it waits for the server's.
    mailbox.on("STLS", [identity = validIdentity()](Peer& peer) {
        peer.send("+OK begin\r\n");
        peer.readLine();
        peer.send("+OK\r\nUSER\r\n.\r\n+OK\r\n+OK\r\n+OK 0 0\r\n");
        peer.holdSilent();
    });
    pop.setTimeouts({300ms, 300ms});
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server, scheme), errors::EncryptionFailed);
        expectOnlyClearCommands(server, {"CAPA", "STLS"});
    }
}

TEST_F(PopEncryptionTrouble, NothingCountsThatStandsBehindTheRefusal) {
    const std::string answer = "-ERR no\r\n+OK extra\r\n";
    for (const char* const scheme : kUpgrading) {
        for (std::size_t bytes = 1; bytes <= answer.size(); ++bytes) {
            SCOPED_TRACE(testing::Message() << scheme << ' ' << bytes);
            const bool inOnePiece = bytes == answer.size();
            mailbox.on("STLS", [&answer, bytes](Peer& peer) { peer.send(answer, bytes); });
            ScriptedServer server(mailbox);
            const int error = logOn(server, scheme);
            // What comes late is not seen by a client that has left.
            const int late = *scheme == '\0' ? 0 : errors::EncryptionNotOffered;
            EXPECT_THAT(error, AnyOf(errors::EncryptionFailed, inOnePiece ? errors::EncryptionFailed : late));
            EXPECT_EQ(logOff(), 0);
            EXPECT_TRUE(server.waitForEndOf(server.connections()));
            EXPECT_THAT(server.commands(0), ElementsAre("CAPA", "STLS"));
            EXPECT_EQ(server.connections(), error == 0 ? 2U : 1U);
        }
    }
}

class BadAnswerToStls : public PopEncryptionTrouble, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadAnswerToStls, EndsTheLogOnWhateverTheSpelling) {
    mailbox.on("STLS", GetParam().answer);
    pop.setTimeouts({200ms, 200ms});
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server, scheme), errors::EncryptionFailed);
        EXPECT_EQ(logOff(), 0);
        expectOnlyClearCommands(server, {"CAPA", "STLS"});
    }
    EXPECT_THAT(protections, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Answers, BadAnswerToStls,
    testing::Values(BadAnswer{"Words", saying("what?\r\n")}, BadAnswer{"EmptyLine", saying("\r\n")},
                    BadAnswer{"OtherWord", saying("+OKAY\r\n")}, BadAnswer{"LowerCase", saying("+ok\r\n")},
                    BadAnswer{"Challenge", saying("+ \r\n")},
                    BadAnswer{"OtherProtocol", saying("220 go\r\n")},
                    BadAnswer{"Encrypted", saying(std::string("\x16\x03\x03\0\x02\x02\n", 7))},
                    BadAnswer{"EndlessLine", saying(std::string(100'000, 'x'))},
                    BadAnswer{"Nothing", saying("", &Peer::holdSilent)},
                    BadAnswer{"HalfALine", saying("+OK beg", &Peer::holdSilent)},
                    BadAnswer{"HangUp", saying("", &Peer::close)},
                    BadAnswer{"HangUpInTheLine", saying("+OK beg", &Peer::close)},
                    BadAnswer{"HangUpBehindIt", saying("+OK begin\r\n", &Peer::close)},
                    BadAnswer{"Reset", saying("", &Peer::reset)},
                    BadAnswer{"ResetBehindIt", saying("+OK begin\r\n", &Peer::reset)},
                    BadAnswer{"SilenceBehindIt", saying("+OK begin\r\n", &Peer::holdSilent)}),
    [](const auto& test) { return test.param.name; });

TEST_F(PopEncryptionTrouble, ABrokenHandshakeEndsTheLogOnWhateverTheSpelling) {
    pop.setTimeouts({200ms, 200ms});
    for (const support::TlsOptions& options : support::brokenHandshakes()) {
        const TlsIdentity identity = validIdentity(options);
        inviteToTls(identity);
        for (const char* const scheme : kUpgrading) {
            ScriptedServer server(mailbox);
            EXPECT_EQ(logOn(server, scheme), errors::EncryptionFailed);
            expectOnlyClearCommands(server, {"CAPA", "STLS"});
        }
        ScriptedServer server(overTls(identity, mailbox));
        EXPECT_EQ(logOn(server, "tls://"), errors::EncryptionFailed);
        expectOnlyClearCommands(server, {});
    }
    EXPECT_THAT(protections, IsEmpty());
}

TEST_F(PopEncryptionTrouble, AServerThatFallsSilentBehindTheHandshakeIsTrouble) {
    mailbox.on("STLS", [this, identity = validIdentity()](Peer& peer) {
        peer.send("+OK begin\r\n");
        peer.beginTls(identity);
        mailbox.on("CAPA", [](Peer& silent) { silent.holdSilent(); });
    });
    pop.setTimeouts({300ms, 300ms});
    for (const char* const scheme : kUpgrading) {
        offerStls();
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server, scheme), errors::MailServerTrouble);
        expectOnlyClearCommands(server, {"CAPA", "STLS", "CAPA"});
    }
}

TEST_F(PopEncryptionTrouble, CanBeGivenUpInTheHandshake) {
    mailbox.on("STLS", saying("+OK begin\r\n", &Peer::holdSilent));
    for (const char* const scheme : kUpgrading) {
        ScriptedServer server(mailbox);
        insideTheWait(server, 2, [this] { pop.giveUp(); });
        EXPECT_EQ(logOn(server, scheme), errors::GivenUp);
        expectOnlyClearCommands(server, {"CAPA", "STLS"});
    }
}

} // namespace
