// No wrong message is ever deleted, whatever other programs do to the mailbox meanwhile.

#include "tests/poplib/pop_fixture.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using support::message;
using support::Peer;
using support::Pop3Mailbox;
using support::PopTest;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

enum class IdKind { Offered, NotOffered };

/** A mailbox of four messages, on a server with and without unique-ids. */
class PopDeletion : public PopTest, public testing::WithParamInterface<IdKind> {
  protected:
    PopDeletion() {
        if (GetParam() == IdKind::NotOffered) {
            mailbox.answer("UIDL", "-ERR what is that\r\n");
        }
        pop.setMailServer(server.address());
    }

    int deleteInASession(std::int16_t number) {
        if (const int error = logOn(); error != 0) {
            return error;
        }
        const int error = remove(number);
        const int quit = logOff();
        return error != 0 ? error : quit;
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
    // No message was deleted, so the numbers have not moved either.
    mailbox.answerProperly("QUIT");
    EXPECT_EQ(deleteInASession(2), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(message("a"), message("c"), message("d")));
}

TEST_P(PopDeletion, ARefusedDeletionOrALostConnectionDeletesNothing) {
    ASSERT_EQ(listing(), 0);
    mailbox.answer("DELE", "-ERR read only\r\n");
    EXPECT_EQ(deleteInASession(1), errors::DeletionRefused);
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

INSTANTIATE_TEST_SUITE_P(Servers, PopDeletion, testing::Values(IdKind::Offered, IdKind::NotOffered),
                         [](const auto& test) {
                             return test.param == IdKind::Offered ? "WithUidl" : "WithoutUidl";
                         });

namespace {
class PopIdenticalCopies : public PopDeletion {
  protected:
    PopIdenticalCopies() {
        mailbox.remove(4).remove(3);
        mailbox.deliver(message("b")).deliver(message("c"));
        // a, b, b, c: the copies have one unique-id where there are any (RFC 1939 section 7 allows it).
        if (GetParam() == IdKind::Offered) {
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
    if (GetParam() == IdKind::Offered) {
        setIds({"a", "b", "c"});
    }
    EXPECT_EQ(deleteInASession(2), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), SizeIs(3));
}

INSTANTIATE_TEST_SUITE_P(Servers, PopIdenticalCopies, testing::Values(IdKind::Offered, IdKind::NotOffered),
                         [](const auto& test) {
                             return test.param == IdKind::Offered ? "WithUidl" : "WithoutUidl";
                         });
