// Connections that end where they should not. The error must tell whether the user may safely send the
// message again.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/sanitizer.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/waiting.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace {

using support::Ending;
using support::Peer;
using support::ScriptedServer;
using support::SmtpMailbox;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
namespace errors = platform::errors;

support::Conversation ending(Ending how) {
    return [how](Peer& peer) { how == Ending::Reset ? peer.reset() : peer.close(); };
}

std::string nameOf(Ending how) {
    return how == Ending::Reset ? "Reset" : "Closed";
}

class SmtpLoss : public support::SmtpTest {
  protected:
    SmtpLoss() { fillIn(); }

    SmtpMailbox mailbox;
};

class SmtpLossAtCommand : public SmtpLoss,
                          public testing::WithParamInterface<std::tuple<const char*, Ending>> {};

TEST_P(SmtpLossAtCommand, TellsWhetherTheMessageMayHaveBeenSent) {
    const auto [command, how] = GetParam();
    mailbox.on(command, ending(how));
    ScriptedServer server(mailbox);
    const bool complete = std::string_view(command) == ".";
    EXPECT_EQ(send(server), complete ? errors::ConfirmationLost : errors::SendingLost);
    EXPECT_EQ(close(), 0);
    EXPECT_THAT(mailbox.messages(), IsEmpty());
    mailbox.answerProperly(command);
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(mailbox.messages().size(), 1U);
    // A reset at once, before the client knows that it is connected, makes the socket try again by itself.
    const bool atOnce = how == Ending::Reset && std::string_view(command) == "GREETING";
    EXPECT_GE(server.connections(), 2U);
    EXPECT_TRUE(atOnce || server.connections() == 2U) << server.connections();
}

std::string lossName(const testing::TestParamInfo<std::tuple<const char*, Ending>>& test) {
    const std::string command = std::get<0>(test.param);
    return (command == "." ? "FinalDot" : command) + nameOf(std::get<1>(test.param));
}

INSTANTIATE_TEST_SUITE_P(Commands, SmtpLossAtCommand,
                         testing::Combine(testing::Values("GREETING", "EHLO", "MAIL", "RCPT", "DATA", "."),
                                          testing::Values(Ending::Close, Ending::Reset)),
                         lossName);

class SmtpLossAfterByte : public SmtpLoss, public testing::WithParamInterface<Ending> {
  protected:
    /** Cuts the connection after so many bytes, sends, and checks that the error number is right. */
    void checkCutAfter(ScriptedServer& server, std::size_t bytes, std::size_t invitationEnd,
                       std::size_t confirmationEnd) {
        SCOPED_TRACE(bytes);
        server.cutAfter(bytes, GetParam());
        const int error = send();
        const std::size_t connection = server.connections();
        ASSERT_TRUE(server.waitForEndOf(connection));
        const std::vector<std::string> heard = server.commands(connection - 1);
        const bool dotHeard = std::find(heard.begin(), heard.end(), ".") != heard.end();
        if (bytes < invitationEnd) {
            ASSERT_EQ(error, errors::SendingLost);
            ASSERT_FALSE(dotHeard);
        } else if (bytes >= confirmationEnd) {
            // A reset may or may not discard the confirmation that is on its way.
            ASSERT_THAT(error, testing::AnyOf(0, errors::ConfirmationLost));
            ASSERT_TRUE(error == 0 || GetParam() == Ending::Reset);
        } else if (dotHeard) {
            ASSERT_EQ(error, errors::ConfirmationLost);
        } else {
            // The server was gone after its 354 reply. The dot may have left all the same, without reaching
            // it.
            ASSERT_THAT(error, testing::AnyOf(errors::SendingLost, errors::ConfirmationLost));
        }
    }
};

TEST_P(SmtpLossAfterByte, NeverHidesThatTheMessageMayHaveBeenSent) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(send(server), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    const std::size_t quit = std::string_view("221 2.0.0 good-bye\r\n").size();
    const std::size_t confirmation = std::string_view("250 2.0.0 message taken\r\n").size();
    const std::size_t confirmationEnd = server.bytesSent() - quit;
    for (std::size_t bytes = 0; bytes <= server.bytesSent() && bytes <= confirmationEnd + quit; ++bytes) {
        ASSERT_NO_FATAL_FAILURE(
            checkCutAfter(server, bytes, confirmationEnd - confirmation, confirmationEnd));
    }
    server.cutNoMore();
    EXPECT_EQ(send(), 0);
}

INSTANTIATE_TEST_SUITE_P(Bytes, SmtpLossAfterByte, testing::Values(Ending::Close, Ending::Reset),
                         [](const auto& test) { return nameOf(test.param); });

/** A message that is larger than any socket's buffer. */
class SmtpLossOfALargeMessage : public SmtpLoss {
  protected:
    SmtpLossOfALargeMessage() {
        std::string body;
        body.resize(support::kSanitized ? 10'000'000 : 40'000'000, 'x');
        smtp.setBody(body);
    }

    /** Accepts DATA, and runs the action once some lines have come. */
    void afterSomeLines(const support::Conversation& action) {
        mailbox.on("DATA", [action](Peer& peer) {
            peer.send("354 go on\r\n");
            for (int line = 0; line < 20; ++line) {
                peer.readLine();
            }
            action(peer);
        });
    }
};

TEST_F(SmtpLossOfALargeMessage, BeforeTheFinalDotItWasCertainlyNotSent) {
    for (const Ending how : {Ending::Close, Ending::Reset}) {
        afterSomeLines(ending(how));
        ScriptedServer server(mailbox);
        EXPECT_EQ(send(server), errors::SendingLost);
        ASSERT_TRUE(server.waitForEndOf(1));
        EXPECT_THAT(server.commands(), Not(Contains(".")));
    }
}

TEST_F(SmtpLossOfALargeMessage, ARefusalInTheMiddleEndsTheSending) {
    for (const auto& [answer, error] : {std::pair("552 too much\r\n", errors::MessageTooLarge),
                                        std::pair("554-no\r\n554 no\r\n", errors::MessageRefused),
                                        std::pair("421 shutting down\r\n", errors::MessageRefusedForNow),
                                        std::pair("250 thanks\r\n", errors::ConfirmationUnclear),
                                        std::pair("354 go on\r\n", errors::SendingOutOfStep),
                                        std::pair("what?\r\n", errors::SendingOutOfStep)}) {
        afterSomeLines([bytes = std::string(answer)](Peer& peer) {
            peer.send(bytes);
            peer.holdSilent();
        });
        ScriptedServer server(mailbox);
        EXPECT_EQ(send(server), error) << answer;
        ASSERT_TRUE(server.waitForEndOf(1));
        EXPECT_THAT(server.commands(), Not(Contains(".")));
        EXPECT_LT(progress.back().first, progress.back().second);
        progress.clear();
    }
}

TEST_F(SmtpLossOfALargeMessage, AServerThatStopsReadingIsGivenUp) {
    smtplib::Timeouts timeouts;
    timeouts.dataBlock = std::chrono::milliseconds(200);
    smtp.setTimeouts(timeouts);
    mailbox.on("DATA", [](Peer& peer) {
        peer.send("354 go on\r\n");
        peer.trickle("2", std::chrono::milliseconds(0)); // half a reply counts as none
        peer.readLine();
        peer.holdSilent();
    });
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), errors::SendingTimedOut);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(), Not(Contains(".")));
}

TEST_F(SmtpLoss, AListenerThatThrowsEndsTheSession) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    smtp.Progress = [](std::int64_t, std::int64_t) { throw platform::RuntimeError(errors::OutOfMemory); };
    EXPECT_EQ(transmit(), errors::OutOfMemory);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(), Not(Contains(".")));
    smtp.Progress = {};
    EXPECT_EQ(send(), 0) << "a later attempt works";
    EXPECT_THAT(mailbox.messages(), SizeIs(1));
}

TEST_F(SmtpLoss, ADataFileThatChangesWhileItIsSentMakesNoMessage) {
    const support::TemporaryFolder folder;
    folder.write("data", std::string(1'000'000, 'x'));
    smtp.setDataFile(folder.qtPath("data"));
    smtp.Progress = [&folder](std::int64_t done, std::int64_t) {
        if (done > 0) {
            folder.write("data", "short");
        }
    };
    ScriptedServer server(mailbox);
    EXPECT_EQ(send(server), errors::DeviceInputOutput);
    ASSERT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.commands(), Not(Contains(".")));
}

TEST_F(SmtpLoss, AConnectionThatBrokeUnnoticedDoesNotKeepANewSessionOut) {
    mailbox.on("EHLO", [](Peer& peer) {
        peer.send("250 mail\r\n");
        peer.close();
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(open(server), 0);
    EXPECT_EQ(transmit(), errors::SendingLost);
    ASSERT_EQ(open(server), 0);
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connectionsEnded() == 2; }));
    mailbox.answerProperly("EHLO");
    EXPECT_EQ(send(), 0);
}

} // namespace
