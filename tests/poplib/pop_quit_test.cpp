// What a server does at the end of a session: it does not matter once everything has come, unless messages
// are marked as deleted.

#include "tests/poplib/pop_fixture.h"
#include "tests/support/pop3_script.h"

#include <QTimer>
#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

struct Quit {
    const char* name;
    const char* command;
    support::Conversation action;
};

const std::vector<Quit>& quits() {
    static const support::Conversation hold = [](Peer& peer) { peer.holdSilent(); };
    static const auto say = [](std::string bytes,
                               const support::Conversation& then) -> support::Conversation {
        return [bytes = std::move(bytes), then](Peer& peer) {
            peer.send(bytes);
            then(peer);
        };
    };
    static const support::Conversation leave = [](Peer& peer) { peer.close(); };
    static const support::Conversation reset = [](Peer& peer) { peer.reset(); };
    static const support::Conversation goOn = [](Peer& peer) {
        for (int number = 1;; ++number) {
            peer.send(std::to_string(number) + " id\r\n");
        }
    };
    static const std::vector<Quit> table{
        {"SilentAtUidl", "UIDL", hold},
        {"HangsUpAtUidl", "UIDL", leave},
        {"ResetsAtUidl", "UIDL", reset},
        {"GarbageAtUidl", "UIDL", say("what?\r\n", hold)},
        {"SilentInTheIds", "UIDL", say("+OK\r\n1 a\r\n", hold)},
        {"HangsUpInTheIds", "UIDL", say("+OK\r\n1 a\r\n", leave)},
        {"IdsWithoutEnd", "UIDL", say("+OK\r\n", goOn)},
        {"SilentAtQuit", "QUIT", hold},
        {"HangsUpAtQuit", "QUIT", leave},
        {"ResetsAtQuit", "QUIT", reset},
        {"GarbageAtQuit", "QUIT", say("\x15\x03\r\n", hold)},
        {"RefusesQuit", "QUIT", say("-ERR stay\r\n", hold)},
        {"HalfAnAnswerToQuit", "QUIT", say("+OK by", hold)},
        {"AnEndlessAnswerToQuit", "QUIT",
         say("+OK ",
             [](Peer& peer) {
                 for (;;) {
                     peer.send(std::string(4096, 'x'));
                 }
             })},
    };
    return table;
}

class BadQuit : public support::PopTest, public testing::WithParamInterface<Quit> {};

class BadConfirmation : public BadQuit {};

std::vector<Quit> badConfirmations() {
    std::vector<Quit> table = quits();
    std::erase_if(table, [](const Quit& quit) { return std::string_view(quit.command) != "QUIT"; });
    return table;
}

TEST_P(BadQuit, IsNoErrorWhenNothingIsToBeDeletedAndTheWindowsLiveOn) {
    Pop3Mailbox mailbox({"Subject: a\r\n\r\nbody\r\n", "Subject: b\r\n\r\nbody\r\n"});
    mailbox.on(GetParam().command, GetParam().action);
    ScriptedServer server(mailbox);
    pop.setMailServer(server.address());
    pop.setTimeouts({20s, 200ms});
    bool beat = false;
    QTimer::singleShot(0ms, [&beat] { beat = true; });
    EXPECT_EQ(listing(), 0);
    EXPECT_THAT(content, SizeIs(4));
    EXPECT_TRUE(beat);
    EXPECT_TRUE(server.waitForEndOf(1)) << "the session is closed";

    // Listed messages can be deleted without unique-ids.
    mailbox.answerProperly(GetParam().command);
    ASSERT_EQ(logOn(), 0);
    EXPECT_EQ(remove(2), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre("Subject: a\r\n\r\nbody\r\n"));
}

TEST_P(BadConfirmation, IsAnErrorWhenSomethingIsToBeDeleted) {
    Pop3Mailbox mailbox({"Subject: a\r\n\r\nbody\r\n", "Subject: b\r\n\r\nbody\r\n"});
    ScriptedServer server(mailbox);
    pop.setMailServer(server.address());
    ASSERT_EQ(listing(), 0);
    pop.setTimeouts({200ms, 20s});
    ASSERT_EQ(logOn(), 0);
    ASSERT_EQ(remove(2), 0);
    mailbox.on("QUIT", GetParam().action);
    EXPECT_EQ(logOff(), errors::MailServerTrouble);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Servers, BadQuit, testing::ValuesIn(quits()),
                         [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(Servers, BadConfirmation, testing::ValuesIn(badConfirmations()),
                         [](const auto& test) { return test.param.name; });

} // namespace
