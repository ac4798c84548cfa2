// What a retrieval raises, and what it does with servers that send too much, too little or two replies.

#include "tests/poplib/pop_fixture.h"

#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>

namespace {

using support::Peer;
using support::Pop3Mailbox;
using support::ScriptedServer;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
namespace errors = platform::errors;

const std::string kRetrieved = "Subject: a\r\n\r\nbody\r\n";

class PopRetrieval : public support::PopTest {};

TEST_F(PopRetrieval, ReportsTotalsAndSizesAsTheServerTellsThem) {
    Pop3Mailbox mailbox({kRetrieved, kRetrieved + kRetrieved});
    mailbox.answer("LIST 2", "+OK 2 2147483647 octets\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(pop.messageCount(), 2);
    EXPECT_EQ(pop.mailboxSize(), 60);
    EXPECT_EQ(sizeOf(1), 20);
    EXPECT_EQ(sizeOf(2), 2147483647);
    EXPECT_EQ(sizeOf(3), 0) << "the server cannot tell";
    EXPECT_EQ(pop.roundTrips(), 6U);
}

TEST_F(PopRetrieval, ShowsTheDialogueButNeverThePassword) {
    ScriptedServer server{Pop3Mailbox()};
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(trail, ElementsAre("< +OK ready", "> CAPA", "< +OK this server can", "> USER bob",
                                   "> PASS ****", "< +OK the password, please", "< +OK welcome", "> STAT",
                                   "< +OK 0 0", "> QUIT", "< +OK good-bye"));
}

TEST_F(PopRetrieval, NeverShowsARefusedPasswordEither) {
    Pop3Mailbox mailbox;
    mailbox.allowOnly("bob", "other");
    ScriptedServer server(mailbox);
    EXPECT_EQ(logOn(server), errors::LogOnRefused);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(trail, Each(Not(HasSubstr("secret"))));
}

TEST_F(PopRetrieval, RaisesTheHeaderOfAWholeMessageAsItCame) {
    const std::vector<std::string> header = {"Subject: a", "X-Tab:\tb", "X-None:c", "X-Two:  d",
                                             "\tfolded",   "no colon",  "X-Empty:"};
    std::string message;
    for (const std::string& line : header) {
        message += line + "\r\n";
    }
    ScriptedServer server{Pop3Mailbox({message + "\r\nbody\r\n"})};
    std::vector<std::string> raw;
    pop.RawHeader = [&raw](const std::string& line) { raw.push_back(line); };
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(retrieve(1, 25), 0);
    EXPECT_THAT(raw, IsEmpty()) << "a list has no use for it";
    EXPECT_EQ(retrieve(1, 0), 0);
    EXPECT_EQ(raw, header);
}

TEST_F(PopRetrieval, WorksWithoutAnyListener) {
    pop.Header = nullptr;
    pop.Transfer = nullptr;
    pop.PITrail = nullptr;
    ScriptedServer server{Pop3Mailbox({kRetrieved})};
    pop.setMailServer(server.address());
    EXPECT_EQ(listing(), 0);
}

TEST_F(PopRetrieval, ServesMessagesThatTheTotalsDidNotAnnounce) {
    Pop3Mailbox mailbox({kRetrieved});
    mailbox.answer("STAT", "+OK 0 0\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(pop.messageCount(), 0);
    EXPECT_EQ(sizeOf(1), 20);
    EXPECT_EQ(retrieve(1), 0);
    EXPECT_THAT(content, SizeIs(2));
}

TEST_F(PopRetrieval, AWholeMessageThatTheServerRefusesIsAnErrorOfItsOwn) {
    Pop3Mailbox mailbox({kRetrieved});
    mailbox.answer("RETR", "-ERR no such message\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(retrieve(1, 0), errors::MessageNotGiven);
    EXPECT_THAT(content, IsEmpty());
    ASSERT_EQ(logOn(), 0) << "the session is closed";
}

TEST_F(PopRetrieval, AListedMessageThatTheServerRefusesHasNoLines) {
    Pop3Mailbox mailbox({kRetrieved});
    mailbox.answer("TOP", "-ERR\r\n").answer("RETR", "-ERR\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    EXPECT_EQ(retrieve(1, 25), 0);
    EXPECT_THAT(content, IsEmpty());
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopRetrieval, ASizeThatTheServerRefusesToTellIsNone) {
    Pop3Mailbox mailbox({kRetrieved, kRetrieved});
    mailbox.answer("LIST 1", "-ERR no such message\r\n").answer("LIST 2", "+OK 2 0\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    pop.setCurrentMessage(1);
    EXPECT_EQ(pop.currentMessageSize(), std::nullopt);
    pop.setCurrentMessage(2);
    EXPECT_EQ(pop.currentMessageSize(), 0);
}

TEST_F(PopRetrieval, AnErrorOfAListenerReachesTheCallerAndClosesTheSession) {
    ScriptedServer server{Pop3Mailbox({kRetrieved})};
    ASSERT_EQ(logOn(server), 0);
    pop.Header = [](const std::string&, const std::string&) {
        throw platform::RuntimeError(errors::SubscriptOutOfRange);
    };
    EXPECT_EQ(retrieve(1), errors::SubscriptOutOfRange);
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(logOn(), 0) << "the next session starts afresh";
    pop.Transfer = [](std::int32_t, const std::string&) { throw std::runtime_error("unforeseen"); };
    pop.Header = nullptr;
    EXPECT_THROW(retrieve(1), std::runtime_error);
    EXPECT_EQ(logOn(), 0);
    EXPECT_TRUE(server.waitForEndOf(2));
}

TEST_F(PopRetrieval, AfterAnErrorNoEventOfTheOldAnswerIsRaised) {
    ScriptedServer server{Pop3Mailbox({"Subject: a\r\nFrom: b\r\n\r\nbody\r\n"})};
    ASSERT_EQ(logOn(server), 0);
    pop.Header = [this](const std::string& field, const std::string& value) {
        content.push_back(support::describedHeader(field, value));
        throw platform::RuntimeError(errors::SubscriptOutOfRange);
    };
    EXPECT_EQ(retrieve(1), errors::SubscriptOutOfRange);
    EXPECT_THAT(content, SizeIs(1));
    EXPECT_EQ(retrieve(1), errors::MailServerTrouble) << "nothing is open";
    EXPECT_THAT(content, SizeIs(1));
}

TEST_F(PopRetrieval, AnErrorOfTheTrailReachesTheCallerToo) {
    ScriptedServer server{Pop3Mailbox()};
    pop.PITrail = [](poplib::Direction, const std::string&) {
        throw platform::RuntimeError(errors::Overflow);
    };
    EXPECT_EQ(logOn(server), errors::Overflow);
    pop.PITrail = nullptr;
    EXPECT_EQ(logOn(), 0);
}

struct Surplus {
    const char* name;
    const char* command;
    std::string bytes;
};

const std::vector<Surplus>& surpluses() {
    static const std::vector<Surplus> table{
        {"GreetedTwice", "GREETING", "+OK\r\n+OK\r\n"},
        {"UserAnsweredTwice", "USER", "+OK\r\n+OK\r\n"},
        {"PassAnsweredTwice", "PASS", "+OK\r\n+OK 9 9\r\n"},
        {"StatAnsweredTwice", "STAT", "+OK 1 20\r\n+OK 1 20\r\n"},
        {"ListAnsweredTwice", "LIST 1", "+OK 1 20\r\n+OK 1 20\r\n"},
        {"TopAnsweredTwice", "TOP 1", "+OK\r\nSubject: a\r\n\r\n.\r\n+OK\r\nSubject: x\r\n\r\n.\r\n"},
        {"LineBehindTheLast", "TOP 1", "+OK\r\nSubject: a\r\n\r\n.\r\nmore\r\n"},
        {"HalfALineBehindTheLast", "TOP 1", "+OK\r\nSubject: a\r\n\r\n.\r\n+"},
    };
    return table;
}

class SurplusAnswer : public PopRetrieval, public testing::WithParamInterface<Surplus> {};

TEST_P(SurplusAnswer, IsNeverTakenForTheAnswerToTheNextCommand) {
    Pop3Mailbox mailbox({kRetrieved, "Subject: b\r\n\r\n"});
    mailbox.answer(GetParam().command, GetParam().bytes);
    ScriptedServer server(mailbox);
    pop.setMailServer(server.address());
    EXPECT_EQ(listing(), errors::MailServerTrouble);
    EXPECT_THAT(content, Each(Not(HasSubstr("[x]"))));
    EXPECT_TRUE(server.waitForEndOf(1));
    const std::vector<std::string> heard = server.commands();
    // The password has gone out with the name, and the surplus passes for its answer until the next one
    // comes.
    const std::string_view command = GetParam().command;
    EXPECT_TRUE(heard.empty() || heard.back().starts_with(command) ||
                (command == "USER" && (heard.back() == "PASS secret" || heard.back() == "STAT")))
        << "asked of a server that is out of step: " << heard.back();
    mailbox.answerProperly(GetParam().command);
    EXPECT_EQ(listing(), 0);
}

INSTANTIATE_TEST_SUITE_P(Answers, SurplusAnswer, testing::ValuesIn(surpluses()),
                         [](const auto& test) { return test.param.name; });

struct Endless {
    const char* name;
    const char* command;
    std::string start;
    std::string repeated;
    std::int32_t bodyLineLimit;
    int error;
};

const std::vector<Endless>& endless() {
    static const std::string wide = std::string(65'534, 'x') + "\r\n";
    static const std::vector<Endless> table{
        {"Greeting", "GREETING", "+OK ", wide.substr(0, 4096), 25, errors::MailServerTrouble},
        {"StatusLine", "TOP", "+OK ", wide.substr(0, 4096), 25, errors::MailServerTrouble},
        {"HeaderLine", "TOP", "+OK\r\nSubject: ", wide.substr(0, 4096), 25, errors::OutOfMemory},
        {"BodyLine", "TOP", "+OK\r\n\r\n", wide.substr(0, 4096), 25, errors::OutOfMemory},
        {"Header", "TOP", "+OK\r\n", wide, 25, errors::OutOfMemory},
        {"Body", "TOP", "+OK\r\n\r\n", wide, 25, errors::OutOfMemory},
        {"Message", "RETR", "+OK\r\n\r\n", wide, 0, errors::OutOfMemory},
    };
    return table;
}

class EndlessAnswer : public PopRetrieval, public testing::WithParamInterface<Endless> {};

TEST_P(EndlessAnswer, IsGivenUpAtItsLimit) {
    const Endless& answer = GetParam();
    Pop3Mailbox mailbox({kRetrieved});
    mailbox.on(answer.command, [&answer](Peer& peer) {
        peer.send(answer.start);
        for (;;) {
            peer.send(answer.repeated);
        }
    });
    ScriptedServer server(mailbox);
    pop.Header = nullptr;
    pop.Transfer = nullptr;
    poplib::Limits limits;
    limits.listingBytes = 8 << 20;
    pop.setLimits(limits);
    int error = logOn(server);
    if (error == 0) {
        error = retrieve(1, answer.bodyLineLimit);
    }
    EXPECT_EQ(error, answer.error);
    EXPECT_TRUE(server.waitForEndOf(1));
    mailbox.answerProperly(answer.command);
    EXPECT_EQ(logOn(), 0) << "a later attempt works";
}

INSTANTIATE_TEST_SUITE_P(Answers, EndlessAnswer, testing::ValuesIn(endless()),
                         [](const auto& test) { return test.param.name; });

} // namespace
