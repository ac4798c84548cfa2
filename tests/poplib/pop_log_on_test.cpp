// What the component makes of a log-on that fails, and of servers that do not know CAPA.

#include "components/sasl/base64.h"
#include "tests/poplib/encrypted_pop_fixture.h"
#include "tests/sasl/repeated_secrets.h"
#include "tests/sasl/scram_server.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::overTls;
using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::validIdentity;
using testing::ElementsAre;
using testing::IsEmpty;
namespace errors = platform::errors;

struct Refusal {
    const char* name;
    const char* command;
    const char* answer;
    int inClear;
    int encrypted;
};

class RefusedLogOn : public support::EncryptedPopTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusedLogOn, HasANumber) {
    mailbox.answerProperly("CAPA").answer(GetParam().command, std::string(GetParam().answer) + "\r\n");
    ScriptedServer inClear(mailbox);
    ScriptedServer encrypted(overTls(validIdentity(), mailbox));
    for (ScriptedServer* const server : {&inClear, &encrypted}) {
        const int expected = server == &inClear ? GetParam().inClear : GetParam().encrypted;
        EXPECT_EQ(logOn(*server, server == &inClear ? "" : "tls://"), expected);
        // Only what may be tried again keeps its session until the log-off.
        const bool mayBeTriedAgain = expected == errors::LogOnRefused || expected == errors::MailServerBusy;
        EXPECT_EQ(logOff(), 0);
        ASSERT_TRUE(server->waitForEndOf(1));
        EXPECT_EQ(server->connections(), 1U) << "one press of the button is one attempt";
        EXPECT_EQ(server->keywords().back() == "QUIT", mayBeTriedAgain);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Answers, RefusedLogOn,
    testing::Values(
        Refusal{"Bare", "PASS", "-ERR", errors::LogOnRefused, errors::LogOnRefused},
        Refusal{"Authentication", "PASS", "-ERR [AUTH] wrong", errors::LogOnRefused, errors::LogOnRefused},
        Refusal{"ForGood", "PASS", "-ERR [SYS/PERM] gone", errors::LogOnImpossible, errors::LogOnImpossible},
        Refusal{"ForGoodAtTheName", "USER", "-ERR [sys/perm]", errors::LogOnImpossible,
                errors::LogOnImpossible},
        Refusal{"InUse", "PASS", "-ERR [IN-USE] locked", errors::MailServerBusy, errors::MailServerBusy},
        Refusal{"TooSoon", "PASS", "-ERR [LOGIN-DELAY 90] wait", errors::MailServerBusy,
                errors::MailServerBusy},
        Refusal{"ForNow", "USER", "-ERR [SYS/TEMP] full", errors::MailServerBusy, errors::MailServerBusy},
        Refusal{"NoPasswordInClear", "PASS",
                "-ERR [AUTH] Plaintext authentication disallowed on non-secure (SSL/TLS) connections.",
                errors::EncryptionNotOffered, errors::LogOnRefused},
        Refusal{"NoUserInClear", "USER", "-ERR USER command only available under a layer",
                errors::EncryptionNotOffered, errors::LogOnRefused},
        Refusal{"NameThatReadsAlike", "PASS", "-ERR [AUTH] no such user: player1 of bottles",
                errors::LogOnRefused, errors::LogOnRefused}),
    [](const auto& test) { return test.param.name; });

class ServerWithoutCapabilities : public support::EncryptedPopTest {};

TEST_F(ServerWithoutCapabilities, IsSpokenToWithoutAndRemembered) {
    const std::vector<std::pair<const char*, support::Conversation>> answers{
        {"hangs up", [](Peer& peer) { peer.close(); }},
        {"resets", [](Peer& peer) { peer.reset(); }},
        {"hangs up in it",
         [](Peer& peer) {
             peer.send("+OK\r\nUSER\r\n");
             peer.close();
         }},
        {"garbage", [](Peer& peer) { peer.send("what?\r\n"); }},
        {"empty line", [](Peer& peer) { peer.send("\r\n"); }},
        {"endless", [](Peer& peer) { peer.send("+OK\r\n" + std::string(70'000, 'x') + "\r\n"); }},
        {"silent", [](Peer& peer) { peer.holdSilent(); }},
    };
    pop.setTimeouts({300ms, 300ms});
    for (const auto& [name, answer] : answers) {
        SCOPED_TRACE(name);
        mailbox.on("CAPA", answer);
        ScriptedServer server(mailbox);
        ASSERT_EQ(logOn(server, ""), 0);
        EXPECT_EQ(logOff(), 0);
        EXPECT_EQ(server.connections(), 2U);
        EXPECT_THAT(server.commands(0), ElementsAre("CAPA"));
        EXPECT_THAT(server.commands(1), ElementsAre("USER bob", "PASS secret", "STAT", "QUIT"));
        ASSERT_EQ(logOn(), 0);
        EXPECT_EQ(logOff(), 0);
        EXPECT_EQ(server.connections(), 3U) << "the next log-on needs no second one";
    }
}

TEST_F(ServerWithoutCapabilities, IsForgottenWhenAnotherIsNamed) {
    mailbox.on("CAPA", [](Peer& peer) { peer.close(); });
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server, ""), 0);
    EXPECT_EQ(logOff(), 0);
    ScriptedServer other{Pop3Mailbox()};
    ASSERT_EQ(logOn(other, ""), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(other.commands().front(), "CAPA");
    mailbox.answerProperly("CAPA");
    ASSERT_EQ(logOn(server, ""), 0);
    EXPECT_EQ(server.commands(2).front(), "CAPA");
}

TEST_F(ServerWithoutCapabilities, IsOneByItsWholeName) {
    mailbox.on("CAPA", [](Peer& peer) { peer.close(); });
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server, ""), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(logOn(server, "starttls://"), errors::EncryptionNotOffered);
    EXPECT_THAT(server.commands(2), ElementsAre("CAPA"));
}

TEST_F(ServerWithoutCapabilities, IsSpokenToEncryptedWhereThatStandsFromTheStart) {
    mailbox.on("CAPA", [](Peer& peer) { peer.close(); });
    ScriptedServer server(overTls(validIdentity(), mailbox));
    ASSERT_EQ(logOn(server, "tls://"), 0);
    EXPECT_TRUE(server.tls(1).handshakeDone);
    EXPECT_THAT(server.commands(1), ElementsAre("USER bob", "PASS secret", "STAT"));
    EXPECT_THAT(protections, ElementsAre(transport::Protection{QStringLiteral("TLS 1.3"), true}));
}

constexpr const char* kPassword = "Open, Sesame!";

/** A server with one way to log on that ends with a reply which repeats all that the client has said. */
support::Conversation repeating(const std::string& mechanism, const std::string& status) {
    return [mechanism, status](Peer& peer) {
        peer.send(mechanism == "APOP" ? "+OK Open, Sesame! <1.2@mail>\r\n" : "+OK Open, Sesame!\r\n");
        for (std::string line = peer.readLine(); line != "QUIT"; line = peer.readLine()) {
            std::string said = line;
            if (line == "CAPA") {
                const bool isSasl = mechanism != "USER" && mechanism != "APOP";
                peer.send(std::string("+OK\r\n") + (mechanism == "PLAIN" ? "" : "USER\r\n") +
                          (isSasl ? "SASL " + mechanism + "\r\n" : "") + ".\r\n");
                continue;
            }
            if (line.starts_with("AUTH ")) {
                said += ' ' + support::playMechanism(peer, line, "+ ", kPassword);
            }
            const bool isStep = line.starts_with("USER ") || line == "STAT";
            std::string repeated = kPassword;
            for (const std::string& form : support::formsOf(kPassword)) {
                repeated += " " + form;
            }
            peer.send((isStep ? (line == "STAT" ? "+OK 0 0" : "+OK") : status) + ' ' + said + ' ' + repeated +
                      "\r\n");
        }
        peer.send(std::string("+OK ") + kPassword + "\r\n");
    };
}

class PopSecrets : public support::EncryptedPopTest, public testing::WithParamInterface<const char*> {};

TEST_P(PopSecrets, StandInNoTrailWhateverTheServerRepeats) {
    pop.setLoginPassword(kPassword);
    for (const char* const status : {"+OK", "-ERR", "-ERR [AUTH]"}) {
        SCOPED_TRACE(status);
        const std::string mechanism = GetParam();
        const auto conversation = repeating(mechanism, status);
        const bool encrypted = mechanism == "PLAIN";
        ScriptedServer server(encrypted ? overTls(validIdentity(), conversation) : conversation);
        const bool accepts = std::string_view(status) == "+OK";
        EXPECT_EQ(logOn(server, encrypted ? "tls://" : "plain://"), accepts ? 0 : errors::LogOnRefused);
        EXPECT_EQ(logOff(), 0);
        EXPECT_THAT(trail, testing::Contains(testing::HasSubstr("****")));
        EXPECT_THAT(support::linesThatTell(trail, kPassword), IsEmpty());
        const std::string keyword =
            mechanism == "APOP" || mechanism == "USER" ? mechanism : "AUTH " + mechanism;
        EXPECT_THAT(server.commands(), testing::Contains(testing::StartsWith(keyword)));
    }
}

INSTANTIATE_TEST_SUITE_P(Mechanisms, PopSecrets,
                         testing::Values("SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN", "APOP", "USER"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::erase(name, '-');
                             return name;
                         });

class UnprovenServer : public support::EncryptedPopTest {};

TEST_F(UnprovenServer, IsLeftAtOnce) {
    // It has another password's keys, and accepts every proof.
    ScriptedServer server([](Peer& peer) {
        peer.send("+OK\r\n");
        peer.readLine();
        peer.send("+OK\r\nUSER\r\nSASL CRAM-MD5 SCRAM-SHA-256\r\n.\r\n");
        const std::string first = peer.readLine().substr(std::string_view("AUTH SCRAM-SHA-256 ").size());
        support::ScramServer scram(QCryptographicHash::Sha256, "another", {});
        peer.send("+ " + sasl::toBase64(scram.firstMessage(sasl::fromBase64(first).value_or(""))) + "\r\n");
        const std::string proof = sasl::fromBase64(peer.readLine()).value_or("");
        peer.send("+ " + sasl::toBase64(scram.signature(proof)) + "\r\n");
        peer.readLine();
        peer.send("+OK welcome\r\n");
        peer.readLine();
    });
    EXPECT_EQ(logOn(server, "plain://"), errors::LogOnRefused);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_EQ(server.commands().back(), "*");
    EXPECT_EQ(server.connections(), 1U);
}

/** The name and the password go out together. */
class RefusedName : public support::PopTest {
  protected:
    Pop3Mailbox mailbox;
};

TEST_F(RefusedName, CountsWhereTheServerHangsUpBehindIt) {
    const std::vector<std::pair<std::string, int>> refusals = {
        {"-ERR who?\r\n", errors::LogOnRefused},
        {"-ERR [IN-USE] later\r\n", errors::MailServerBusy},
        {"-ERR [SYS/PERM] never\r\n", errors::LogOnImpossible}};
    for (const auto& [refusal, error] : refusals) {
        mailbox.on("USER", [refusal = refusal](Peer& peer) {
            peer.send(refusal);
            peer.close();
        });
        ScriptedServer server(mailbox);
        EXPECT_EQ(logOn(server), error) << refusal;
        EXPECT_EQ(logOff(), 0);
    }
}

TEST_F(RefusedName, CountsWhereTheServerSaysNothingOfThePassword) {
    mailbox.on("USER", [](Peer& peer) {
        peer.send("-ERR who?\r\n");
        peer.holdSilent();
    });
    poplib::Timeouts timeouts;
    timeouts.soon = 50ms;
    pop.setTimeouts(timeouts);
    ScriptedServer server(mailbox);
    EXPECT_EQ(logOn(server), errors::LogOnRefused);
}

} // namespace
