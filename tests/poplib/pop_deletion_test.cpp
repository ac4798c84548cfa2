// No wrong message is ever deleted, whatever others do to the mailbox meanwhile.

#include "tests/poplib/pop_fixture.h"
#include "tests/support/pop3_script.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using support::Peer;
using support::Pop3Mailbox;
using support::PopTest;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

std::string message(const std::string& name) {
    return "From: " + name + "@example.org\r\nSubject: " + name + "\r\n\r\ntext\r\n";
}

enum class Ids { Offered, NotOffered };

/** A mailbox of four messages, on a server with and without unique-ids. */
class PopDeletion : public PopTest, public testing::WithParamInterface<Ids> {
  protected:
    PopDeletion() {
        if (GetParam() == Ids::NotOffered) {
            mailbox.answer("UIDL", "-ERR what is that\r\n");
        }
        pop.setMailServer(server.address());
    }

    int deleteInASession(std::int16_t number) {
        if (const int error = logOn(); error != 0) {
            return error;
        }
        const int error = remove(number);
        const int farewell = logOff();
        return error != 0 ? error : farewell;
    }

    Pop3Mailbox mailbox{{message("a"), message("b"), message("c"), message("d")}};
    ScriptedServer server{mailbox};
};
} // namespace

TEST_P(PopDeletion, RemovesTheMessageThatWasListedUnderTheNumber) {
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteInASession(2), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("a"), message("c"), message("d")));
}

TEST_P(PopDeletion, FollowsItsOwnDeletionsOneAfterTheOther) {
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteInASession(2), 0);
    EXPECT_EQ(deleteInASession(2), 0);
    EXPECT_EQ(deleteInASession(1), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("d")));
    EXPECT_EQ(deleteInASession(1), 0);
    EXPECT_EQ(deleteInASession(1), errors::AnotherMessage);
}

TEST_P(PopDeletion, RefusesANumberThatMovedBecauseAnotherClientDeleted) {
    ASSERT_EQ(listing(), 0);
    mailbox.remove(1);
    EXPECT_EQ(deleteInASession(3), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(3));
}

TEST_P(PopDeletion, RefusesItAlsoWhenNewMailMadeTheCountEqualAgain) {
    ASSERT_EQ(listing(), 0);
    mailbox.remove(1).deliver(message("e"));
    EXPECT_EQ(deleteInASession(3), errors::AnotherMessage);
    EXPECT_EQ(deleteInASession(4), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(4));
}

TEST_P(PopDeletion, RefusesTheLastNumberWhenItIsGone) {
    ASSERT_EQ(listing(), 0);
    mailbox.remove(2);
    EXPECT_EQ(deleteInASession(4), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(3));
}

TEST_P(PopDeletion, StillDeletesInFrontOfWhatAnotherClientChanged) {
    ASSERT_EQ(listing(), 0);
    mailbox.remove(3);
    EXPECT_EQ(deleteInASession(1), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("b"), message("d")));
}

TEST_P(PopDeletion, RefusesAMessageThatWasNeverListed) {
    EXPECT_EQ(deleteInASession(1), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(4));
}

TEST_P(PopDeletion, RefusesEverythingAfterTheMailboxWasRebuilt) {
    ASSERT_EQ(listing(), 0);
    for (int number = 1; number <= 4; ++number) {
        mailbox.remove(1).deliver(message("new " + std::to_string(number)));
    }
    for (std::int16_t number = 1; number <= 4; ++number) {
        EXPECT_EQ(deleteInASession(number), errors::AnotherMessage);
    }
    EXPECT_THAT(mailbox.messages(), SizeIs(4));
}

TEST_P(PopDeletion, ListingAnewMakesTheNumbersRightAgain) {
    ASSERT_EQ(listing(), 0);
    mailbox.remove(1);
    ASSERT_EQ(deleteInASession(3), errors::AnotherMessage);
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteInASession(3), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("b"), message("c")));
}

TEST_P(PopDeletion, IsNoSuccessUntilTheServerHasSaidSo) {
    ASSERT_EQ(listing(), 0);
    for (const bool reset : {false, true}) {
        mailbox.on("QUIT", [reset](Peer& peer) { reset ? peer.reset() : peer.close(); });
        EXPECT_EQ(deleteInASession(1), errors::MailServerTrouble);
        EXPECT_THAT(mailbox.messages(), SizeIs(4));
    }
    mailbox.answer("QUIT", "-ERR some deleted messages not removed\r\n");
    EXPECT_EQ(deleteInASession(1), errors::MailServerTrouble);
    // Nothing is gone, so the numbers have not moved either.
    mailbox.answerProperly("QUIT");
    EXPECT_EQ(deleteInASession(2), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("a"), message("c"), message("d")));
}

TEST_P(PopDeletion, ARefusedDeletionOrALostConnectionDeletesNothing) {
    ASSERT_EQ(listing(), 0);
    mailbox.answer("DELE", "-ERR read only\r\n");
    EXPECT_EQ(deleteInASession(1), errors::MailServerTrouble);
    mailbox.on("DELE", [](Peer& peer) { peer.close(); });
    EXPECT_EQ(deleteInASession(1), errors::MailServerTrouble);
    EXPECT_THAT(mailbox.messages(), SizeIs(4));
}

TEST_P(PopDeletion, ComparingRaisesNoEventsOfAMessage) {
    ASSERT_EQ(listing(), 0);
    content.clear();
    ASSERT_EQ(deleteInASession(2), 0);
    EXPECT_THAT(content, testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Servers, PopDeletion, testing::Values(Ids::Offered, Ids::NotOffered),
                         [](const auto& test) {
                             return test.param == Ids::Offered ? "WithUidl" : "WithoutUidl";
                         });

namespace {
class PopIdenticalCopies : public PopDeletion {
  protected:
    PopIdenticalCopies() {
        mailbox.remove(4).remove(3);
        mailbox.deliver(message("b")).deliver(message("c"));
        // a, b, b, c: the copies have one unique-id where there are any (RFC 1939 section 7 allows it).
        if (GetParam() == Ids::Offered) {
            setIds({"a", "b", "b", "c"});
        }
    }

    void setIds(const std::vector<std::string>& ids) {
        std::string answer = "+OK\r\n";
        for (std::size_t index = 0; index < ids.size(); ++index) {
            answer += std::to_string(index + 1) + ' ' + ids[index] + "\r\n";
        }
        mailbox.answer("UIDL", answer + ".\r\n");
    }
};
} // namespace

TEST_P(PopIdenticalCopies, OneOfThemIsDeletedWhileAllAreWhereTheyWere) {
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(deleteInASession(3), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("a"), message("b"), message("c")));
}

TEST_P(PopIdenticalCopies, NoneIsDeletedWhenAnotherClientHasTakenOne) {
    ASSERT_EQ(listing(), 0);
    mailbox.remove(2);
    if (GetParam() == Ids::Offered) {
        setIds({"a", "b", "c"});
    }
    EXPECT_EQ(deleteInASession(2), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(3));
}

INSTANTIATE_TEST_SUITE_P(Servers, PopIdenticalCopies, testing::Values(Ids::Offered, Ids::NotOffered),
                         [](const auto& test) {
                             return test.param == Ids::Offered ? "WithUidl" : "WithoutUidl";
                         });

namespace {
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
