// What unique-ids are worth to the guard for deletions: much where they differ, nothing where they agree.

#include "tests/poplib/pop_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {
using support::message;
using support::Pop3Mailbox;
using support::PopTest;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

class PopUniqueIds : public PopTest {
  protected:
    int deleteFirst() {
        if (const int error = logOn(); error != 0) {
            return error;
        }
        const int error = remove(1);
        logOff();
        return error;
    }

    Pop3Mailbox mailbox{{message("a"), message("b")}};
    ScriptedServer server{mailbox};
};
} // namespace

TEST_F(PopUniqueIds, AreAskedForOnceWhenMessagesWereListed) {
    pop.setMailServer(server.address());
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(std::count(trail.begin(), trail.end(), "> UIDL"), 1);
    trail.clear();
    ASSERT_EQ(logOn(), 0);
    ASSERT_EQ(retrieve(1, 0), 0);
    ASSERT_EQ(logOff(), 0);
    EXPECT_EQ(std::count(trail.begin(), trail.end(), "> UIDL"), 0);
}

TEST_F(PopUniqueIds, OfOddShapesAreOnlyComparedOrPassedOver) {
    pop.setMailServer(server.address());
    const std::vector<std::string> oddAnswers = {"1 /../x\x1b[2J\r\n",
                                                 "1\r\n",
                                                 "one a\r\n",
                                                 "",
                                                 "1 " + std::string(71, 'x') + "\r\n",
                                                 "99999999999 a\r\n1 b\r\n",
                                                 "0 a\r\n-1 b\r\n1 \r\n"};
    int newMessages = 0;
    for (const std::string& ids : oddAnswers) {
        mailbox.answer("UIDL", "+OK\r\n" + ids + ".\r\n");
        ASSERT_EQ(listing(), 0) << ids;
        mailbox.remove(1).deliver(message("new " + std::to_string(++newMessages)));
        mailbox.answer("UIDL", "+OK\r\n1 other\r\n.\r\n");
        EXPECT_EQ(deleteFirst(), errors::AnotherMessage) << ids;
        EXPECT_THAT(mailbox.messages(), SizeIs(2));
    }
}

TEST_F(PopUniqueIds, ThatAreNoLongerOfferedLeaveSizeAndHeaderToCompare) {
    pop.setMailServer(server.address());
    ASSERT_EQ(listing(), 0);
    mailbox.answer("UIDL", "-ERR not today\r\n");
    EXPECT_EQ(deleteFirst(), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("b")));
}

TEST_F(PopUniqueIds, AMessageThatTheServerCannotGiveIsStillKnownByItsId) {
    pop.setMailServer(server.address());
    mailbox.answer("TOP 1", "-ERR broken\r\n").answer("RETR 1", "-ERR broken\r\n");
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteFirst(), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("b")));
}

TEST_F(PopUniqueIds, AMessageThatCanBeGivenNowIsNotTheOneThatCouldNot) {
    pop.setMailServer(server.address());
    mailbox.answer("TOP 1", "-ERR broken\r\n").answer("RETR 1", "-ERR broken\r\n");
    ASSERT_EQ(listing(), 0);
    mailbox.answerProperly("TOP 1").answerProperly("RETR 1");
    EXPECT_EQ(deleteFirst(), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

TEST_F(PopUniqueIds, ThatSayNothingLeaveAMessageThatTheServerCannotGiveWhereItIs) {
    pop.setMailServer(server.address());
    mailbox.answer("TOP 1", "-ERR broken\r\n").answer("RETR 1", "-ERR broken\r\n");
    for (const char* ids : {"1 1\r\n2 2\r\n", "1 same\r\n2 same\r\n"}) {
        mailbox.answer("UIDL", std::string("+OK\r\n") + ids + ".\r\n");
        ASSERT_EQ(listing(), 0);
        EXPECT_EQ(deleteFirst(), errors::AnotherMessage) << ids;
    }
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

TEST_F(PopUniqueIds, ThatAreNumbersDoNotKeepOneDeletionAfterTheOtherFromWorking) {
    pop.setMailServer(server.address());
    mailbox.answer("UIDL", "+OK\r\n1 1\r\n2 2\r\n.\r\n");
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteFirst(), 0);
    EXPECT_EQ(deleteFirst(), 0);
    EXPECT_THAT(mailbox.messages(), SizeIs(0));
}

TEST_F(PopUniqueIds, ThatAgreeProveNothing) {
    pop.setMailServer(server.address());
    mailbox.answer("UIDL", "+OK\r\n1 x\r\n2 y\r\n.\r\n");
    ASSERT_EQ(listing(), 0);
    mailbox.remove(1);
    EXPECT_EQ(deleteFirst(), errors::AnotherMessage);
    mailbox.deliver(message("b"));
    EXPECT_EQ(deleteFirst(), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

TEST_F(PopUniqueIds, ASizeThatTheServerDoesNotTellIsADoubt) {
    pop.setMailServer(server.address());
    for (const char* answer : {"-ERR\r\n", "+OK 1 2147483647\r\n"}) {
        mailbox.answer("LIST 1", answer);
        ASSERT_EQ(listing(), 0);
        mailbox.answerProperly("LIST 1");
        EXPECT_EQ(deleteFirst(), errors::AnotherMessage) << answer;
        ASSERT_EQ(listing(), 0);
        mailbox.answer("LIST 1", answer);
        EXPECT_EQ(deleteFirst(), errors::AnotherMessage) << answer;
    }
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

TEST_F(PopUniqueIds, OnlyTheFirstLinesOfAMessageTellItFromOneOfTheSameSizeAndHeader) {
    pop.setMailServer(server.address());
    const std::string header = "Subject: nightly run\r\n\r\n";
    mailbox.deliver(header + "all well\r\n").deliver(header + "all lost\r\n");
    mailbox.remove(1).remove(1);
    mailbox.answer("UIDL", "-ERR\r\n");
    ASSERT_EQ(listing(), 0);
    mailbox.remove(1).deliver(header + "all fine\r\n");
    EXPECT_EQ(deleteFirst(), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

TEST_F(PopUniqueIds, AVeryLargeMessageOnAServerWithoutTopIsKnownByItsId) {
    poplib::Limits limits;
    limits.wholeMessageBytes = 20;
    pop.setLimits(limits);
    pop.setMailServer(server.address());
    mailbox.answer("TOP", "-ERR\r\n");
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteFirst(), 0);
    EXPECT_EQ(std::count(trail.begin(), trail.end(), "> RETR 1"), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("b")));
}

TEST_F(PopUniqueIds, WithoutIdAndHeaderAMessageIsNotDeleted) {
    pop.setMailServer(server.address());
    mailbox.answer("UIDL", "-ERR\r\n").answer("TOP 1", "-ERR broken\r\n").answer("RETR 1", "-ERR broken\r\n");
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteFirst(), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

TEST_F(PopUniqueIds, ATopThatIsNotKnownIsReplacedByTheWholeMessage) {
    pop.setMailServer(server.address());
    mailbox.answer("UIDL", "-ERR\r\n").answer("TOP", "-ERR\r\n");
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteFirst(), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("b")));
}
