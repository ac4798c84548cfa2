// What the component does with servers that cannot be reached, are silent, or are slow.

#include "tests/poplib/pop_fixture.h"

#include <QTimer>
#include <gmock/gmock.h>

namespace {

using namespace std::chrono_literals;
using support::Peer;
using support::Pop3Mailbox;
using support::Script;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

class PopWaiting : public support::PopTest {};

TEST_F(PopWaiting, TellsAnUnknownNameARefusalAndAMissingRouteApart) {
    const support::RefusingPort refusing;
    pop.setMailServer(QStringLiteral("no-such-host.invalid"));
    EXPECT_EQ(logOn(), errors::HostNotFound);
    pop.setMailServer(refusing.address());
    EXPECT_EQ(logOn(), errors::ConnectionRefused);
    // A broadcast address has no route for a stream, whatever the machine's network looks like.
    pop.setMailServer(QStringLiteral("127.255.255.255:110"));
    EXPECT_EQ(logOn(), errors::NetworkUnreachable);
}

TEST_F(PopWaiting, TakesANameThatIsNoneForAnUnknownOne) {
    for (const char* name : {"", " ", ":110", "host:", "host:0", "host:port", "[::1", "a:b:c"}) {
        pop.setMailServer(QString::fromLatin1(name));
        EXPECT_EQ(logOn(), errors::HostNotFound) << name;
    }
}

TEST_F(PopWaiting, LogsOnAfterAnAttemptThatFailed) {
    const support::RefusingPort refusing;
    pop.setMailServer(refusing.address());
    EXPECT_EQ(logOn(), errors::ConnectionRefused);
    ScriptedServer server{Pop3Mailbox()};
    EXPECT_EQ(logOn(server), 0);
}

struct Silence {
    const char* name;
    std::vector<std::pair<std::string, support::Conversation>> actions;
    /** Requests that succeed before the one in which the server is silent. */
    int requestsBefore;
};

const std::vector<Silence>& silences() {
    static const support::Conversation hold = [](Peer& peer) { peer.holdSilent(); };
    static const auto say = [](const char* bytes) -> support::Conversation {
        return [bytes](Peer& peer) {
            peer.send(bytes);
            peer.holdSilent();
        };
    };
    static const std::vector<Silence> table{
        {"NoGreeting", {{"GREETING", hold}}, 0},
        {"HalfAGreeting", {{"GREETING", say("+OK rea")}}, 0},
        {"GreetingWithoutLineFeed", {{"GREETING", say("+OK ready\r")}}, 0},
        {"AfterUser", {{"USER", hold}}, 0},
        {"AfterPass", {{"PASS", hold}}, 0},
        {"AfterStat", {{"STAT", say("+OK 1")}}, 0},
        {"AfterList", {{"LIST", hold}}, 1},
        {"AfterTop", {{"TOP", hold}}, 2},
        {"InAHeader", {{"TOP", say("+OK\r\nSubject: a\r\nFrom")}}, 2},
        {"InABody", {{"TOP", say("+OK\r\nSubject: a\r\n\r\nbody\r\n.")}}, 2},
        {"InAnUnwantedLine", {{"TOP", say("+OK\r\n\r\n")}}, 2},
    };
    return table;
}

class SilentServer : public PopWaiting, public testing::WithParamInterface<Silence> {};

TEST_P(SilentServer, IsGivenUpAfterTheTimeOutWhileTimersGoOn) {
    Pop3Mailbox mailbox({"Subject: a\r\n\r\nbody\r\n"});
    for (const auto& [command, action] : GetParam().actions) {
        mailbox.on(command, action);
    }
    ScriptedServer server(mailbox);
    pop.setMailServer(server.address());
    pop.setTimeouts({200ms, 200ms});
    int beats = 0;
    QTimer heartbeat;
    QObject::connect(&heartbeat, &QTimer::timeout, &heartbeat, [&beats] { ++beats; });
    heartbeat.start(10ms);
    EXPECT_EQ(listing(), errors::MailServerTrouble);
    EXPECT_GE(beats, 3);
    heartbeat.stop();

    for (const auto& [command, action] : GetParam().actions) {
        mailbox.answerProperly(command);
    }
    pop.setTimeouts({});
    EXPECT_EQ(listing(), 0) << "a later attempt works";
}

INSTANTIATE_TEST_SUITE_P(Places, SilentServer, testing::ValuesIn(silences()),
                         [](const auto& test) { return test.param.name; });

TEST_F(PopWaiting, AnAnswerThatComesByteByByteWithoutALineIsGivenUp) {
    const std::string greeting(500, 'x');
    ScriptedServer server(Script{support::Trickle{greeting, 10ms}});
    pop.setTimeouts({200ms, 200ms});
    EXPECT_EQ(logOn(server), errors::MailServerTrouble);
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_LT(server.bytesSent(), greeting.size());
}

TEST_F(PopWaiting, AGreetingThatComesByteByByteInTimeIsTaken) {
    Pop3Mailbox mailbox;
    mailbox.on("GREETING", [](Peer& peer) { peer.trickle("+OK ready\r\n", 1ms); });
    ScriptedServer server(mailbox);
    EXPECT_EQ(logOn(server), 0);
}

/** A message whose body lines come one by one; all of them together take longer than the time-out. */
support::Conversation slowLines(std::size_t bytes) {
    return [bytes](Peer& peer) {
        peer.send("+OK\r\nSubject: a\r\n\r\n");
        for (int line = 0; line < 4; ++line) {
            peer.send(std::string(bytes, 'x') + '\r');
            peer.trickle("\n", 600ms);
        }
        peer.send(".\r\n");
    };
}

TEST_F(PopWaiting, AnAnswerThatKeepsComingMayTakeLongerThanTheTimeOut) {
    Pop3Mailbox mailbox({"Subject: a\r\n\r\n"});
    mailbox.on("TOP", slowLines(poplib::Pop3Session::kBytesOfProgress));
    ScriptedServer server(mailbox);
    pop.setTimeouts({1s, 1s});
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(retrieve(1), 0);
    EXPECT_THAT(content, SizeIs(5));
}

TEST_F(PopWaiting, LinesPastTheWantedOnesAreASignOfLifeToo) {
    Pop3Mailbox mailbox({"Subject: a\r\n\r\n"});
    mailbox.on("TOP", slowLines(poplib::Pop3Session::kBytesOfProgress));
    ScriptedServer server(mailbox);
    pop.setTimeouts({1s, 1s});
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(retrieve(1, 1), 0);
    EXPECT_THAT(content, SizeIs(2));
}

TEST_F(PopWaiting, AServerThatOnlySendsALineNowAndThenIsGivenUp) {
    for (const std::int32_t bodyLineLimit : {25, 1, 0}) {
        Pop3Mailbox mailbox({"Subject: a\r\n\r\n"});
        mailbox.on("TOP", slowLines(1)).on("RETR", slowLines(1));
        ScriptedServer server(mailbox);
        pop.setTimeouts({1s, 1s});
        ASSERT_EQ(logOn(server), 0);
        EXPECT_EQ(retrieve(1, bodyLineLimit), errors::MailServerTrouble) << bodyLineLimit;
    }
}

TEST_F(PopWaiting, EveryAnswerMayTakeTheWholeTimeOut) {
    Pop3Mailbox mailbox({"Subject: a\r\n\r\n"});
    const auto late = [](const std::string& bytes) -> support::Conversation {
        return [bytes](Peer& peer) {
            peer.trickle("+", 600ms);
            peer.send(bytes);
        };
    };
    mailbox.on("USER", late("OK\r\n")).on("LIST", late("OK 1 14\r\n"));
    mailbox.on("TOP", late("OK\r\nSubject: a\r\n\r\n.\r\n"));
    ScriptedServer server(mailbox);
    pop.setTimeouts({1s, 1s});
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(sizeOf(1), 14);
    EXPECT_EQ(retrieve(1), 0);
}

TEST_F(PopWaiting, ARefusedLogOnSaysGoodbyeWithoutWaitingLong) {
    Pop3Mailbox mailbox;
    mailbox.answer("PASS", "-ERR no\r\n").on("QUIT", [](Peer& peer) { peer.holdSilent(); });
    ScriptedServer server(mailbox);
    pop.setTimeouts({20s, 50ms});
    EXPECT_EQ(logOn(server), errors::LogOnRefused);
    EXPECT_EQ(logOff(), 0) << "nothing depends on the answer";
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER bob", "PASS secret", "QUIT"));
}

TEST_F(PopWaiting, WhatCannotBeSentReachesNoServer) {
    Pop3Mailbox mailbox;
    ScriptedServer server(mailbox);
    for (const std::string& text : {std::string("bob\r\nDELE 1"), std::string("bob\n"),
                                    std::string("bo\0b", 4), std::string(249, 'x')}) {
        pop.setLoginUser(text);
        pop.setLoginPassword("secret");
        EXPECT_EQ(logOn(server), errors::LogOnRefused);
        pop.setLoginUser("bob");
        pop.setLoginPassword(text);
        EXPECT_EQ(logOn(server), errors::LogOnRefused);
    }
    EXPECT_EQ(server.connections(), 0U);
    pop.setLoginPassword(" two  words ");
    EXPECT_EQ(logOn(server), 0);
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER bob", "PASS  two  words ", "STAT"));
}

} // namespace
