// What the component does with servers that cannot be reached, are silent, or are slow.

#include "tests/smtplib/smtp_fixture.h"

#include <QTimer>
#include <gmock/gmock.h>

namespace {

using namespace std::chrono_literals;
using support::Peer;
using support::ScriptedServer;
using support::SmtpMailbox;
using testing::SizeIs;
namespace errors = platform::errors;

class SmtpWaiting : public support::SmtpTest {
  protected:
    SmtpWaiting() { fillIn(); }

    SmtpMailbox mailbox;
};

TEST_F(SmtpWaiting, TellsAnUnknownNameARefusalAndAMissingRouteApart) {
    const support::RefusingPort refusing;
    smtp.setHost(QStringLiteral("no-such-host.invalid"));
    EXPECT_EQ(open(), errors::HostNotFound);
    smtp.setHost(refusing.address());
    EXPECT_EQ(open(), errors::ConnectionRefused);
    // A broadcast address has no route for a stream, whatever the machine's network looks like.
    smtp.setHost(QStringLiteral("127.255.255.255:25"));
    EXPECT_EQ(open(), errors::NetworkUnreachable);
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0) << "a later attempt works";
}

TEST_F(SmtpWaiting, TakesANameThatIsNoneForAnUnknownOne) {
    for (const char* name : {"", " ", ":25", "host:", "host:0", "[::1", "a:b:c"}) {
        smtp.setHost(QString::fromLatin1(name));
        EXPECT_EQ(open(), errors::HostNotFound) << name;
    }
}

struct Silence {
    const char* name;
    const char* command;
    const char* bytes;
    std::chrono::milliseconds smtplib::Timeouts::*timeout;
    int error;
};

class SilentSmtpServer : public SmtpWaiting, public testing::WithParamInterface<Silence> {};

TEST_P(SilentSmtpServer, IsGivenUpAfterItsOwnTimeOutWhileTimersGoOn) {
    mailbox.on(GetParam().command, [bytes = std::string(GetParam().bytes)](Peer& peer) {
        if (!bytes.empty()) {
            peer.send(bytes);
        }
        peer.holdSilent();
    });
    ScriptedServer server(mailbox);
    smtplib::Timeouts timeouts;
    timeouts.*GetParam().timeout = 200ms;
    smtp.setTimeouts(timeouts);
    int beats = 0;
    QTimer heartbeat;
    QObject::connect(&heartbeat, &QTimer::timeout, &heartbeat, [&beats] { ++beats; });
    heartbeat.start(10ms);
    EXPECT_EQ(send(server), GetParam().error);
    EXPECT_GE(beats, 3);
    heartbeat.stop();

    mailbox.answerProperly(GetParam().command);
    EXPECT_EQ(send(), 0) << "a later attempt works";
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}

using smtplib::Timeouts;

INSTANTIATE_TEST_SUITE_P(
    Places, SilentSmtpServer,
    testing::Values(Silence{"NoGreeting", "GREETING", "", &Timeouts::greeting, errors::SendingTimedOut},
                    Silence{"HalfAGreeting", "GREETING", "220-a\r\n220", &Timeouts::greeting,
                            errors::SendingTimedOut},
                    Silence{"Hello", "EHLO", "250-mail\r\n", &Timeouts::hello, errors::SendingTimedOut},
                    Silence{"OldHello", "EHLO", "500 what\r\n", &Timeouts::hello, errors::SendingTimedOut},
                    Silence{"Sender", "MAIL", "", &Timeouts::sender, errors::SendingTimedOut},
                    Silence{"Recipient", "RCPT", "2", &Timeouts::recipient, errors::SendingTimedOut},
                    Silence{"Data", "DATA", "354 go on\r", &Timeouts::data, errors::SendingTimedOut},
                    Silence{"Confirmation", ".", "", &Timeouts::confirmation, errors::ConfirmationTimedOut},
                    Silence{"HalfAConfirmation", ".", "250-taken\r\n", &Timeouts::confirmation,
                            errors::ConfirmationTimedOut}),
    [](const auto& test) { return test.param.name; });

TEST_F(SmtpWaiting, AnAnswerThatComesByteByByteWithoutALineIsGivenUp) {
    const std::string greeting(500, '2');
    ScriptedServer server(support::Script{support::Trickle{"220 " + greeting, 10ms}});
    smtplib::Timeouts timeouts;
    timeouts.greeting = 200ms;
    smtp.setTimeouts(timeouts);
    EXPECT_EQ(open(server), errors::SendingTimedOut);
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_LT(server.bytesSent(), greeting.size());
}

TEST_F(SmtpWaiting, AnswersThatComeByteByByteInTimeAreTaken) {
    mailbox.on("GREETING", [](Peer& peer) { peer.trickle("220 ready\r\n", 1ms); });
    mailbox.on(".", [](Peer& peer) { peer.trickle("250-taken\r\n250 really\r\n", 1ms); });
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), 0);
}

TEST_F(SmtpWaiting, TheTimesAreThoseThatServersRelyOn) {
    const smtplib::Timeouts timeouts;
    EXPECT_EQ(timeouts.greeting, 5min);
    EXPECT_EQ(timeouts.sender, 5min);
    EXPECT_EQ(timeouts.recipient, 5min);
    EXPECT_EQ(timeouts.data, 2min);
    EXPECT_EQ(timeouts.dataBlock, 3min);
    EXPECT_EQ(timeouts.confirmation, 10min);
}

} // namespace
