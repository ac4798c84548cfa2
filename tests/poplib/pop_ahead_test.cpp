// Commands that are sent ahead of the replies to others, and servers that can do this, or cannot.

#include "tests/poplib/pop_ahead_fixture.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace {

namespace errors = platform::errors;
using support::kAnnouncesNothing;
using support::kAnnouncesNoTop;
using support::Peer;
using support::PopAhead;
using support::ScriptedServer;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::SizeIs;

TEST_F(PopAhead, AListingOfAnyLengthTakesTheSameFewRoundTrips) {
    for (int more = 0; more < 47; ++more) {
        mailbox.deliver(support::message("more"));
    }
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), SizeIs(50));
    EXPECT_EQ(pop.roundTrips(), 4U) << "CAPA; USER, PASS; STAT; LIST, TOP, UIDL, QUIT";
    const std::vector<std::string> keywords = server.keywords();
    EXPECT_THAT(std::vector(keywords.begin(), keywords.begin() + 8),
                ElementsAre("CAPA", "USER", "PASS", "STAT", "LIST", "TOP", "LIST", "TOP"));
    EXPECT_EQ(keywords.size(), 4 + 2 * 50 + 2U);
    EXPECT_EQ(keywords.back(), "QUIT");
}

TEST_F(PopAhead, ACommandNeverGoesOutBehindThePasswordBeforeItIsAccepted) {
    mailbox.on("PASS", [](Peer& peer) { peer.holdSilent(); });
    ScriptedServer server(mailbox);
    const support::WhenItHolds waiting([&] { return server.commands().size() == 3; }, [&] { pop.giveUp(); });
    EXPECT_EQ(listing(server), errors::GivenUp);
    EXPECT_THAT(server.keywords(), ElementsAre("CAPA", "USER", "PASS"));
}

TEST_F(PopAhead, AServerThatAnnouncesNothingIsTriedWithStatAndList) {
    mailbox.answer("CAPA", kAnnouncesNothing);
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "two]", "three]"));
    EXPECT_THAT(server.commands(), ElementsAre("CAPA", "USER bob", "PASS secret", "STAT", "LIST", "TOP 1 25",
                                               "TOP 2 25", "TOP 3 25", "UIDL", "QUIT"));
    EXPECT_EQ(pop.roundTrips(), 6U);
}

TEST_F(PopAhead, AServerThatLosesWhatComesTooEarlyGetsOneCommandAtATimeInANewSession) {
    mailbox.answer("CAPA", kAnnouncesNothing).on("STAT", [](Peer& peer) {
        peer.send("+OK 3 150\r\n");
        if (peer.connection() == 0) {
            peer.readLine();
        }
    });
    poplib::Timeouts timeouts;
    timeouts.soon = std::chrono::milliseconds(50);
    pop.setTimeouts(timeouts);
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "two]", "three]"));
    EXPECT_EQ(server.connections(), 2U);
    EXPECT_EQ(pop.roundTrips(), 4U + 10U)
        << "CAPA, USER, PASS, STAT, LIST, TOP for each, UIDL, QUIT one by one";
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(server.connections(), 3U) << "it is not tried again";
}

TEST_F(PopAhead, ABoxThatStaysOpenLongerThanAReplyMayTakeIsNoLostReply) {
    mailbox.answer("CAPA", kAnnouncesNothing).on("LIST", support::holdAndSay("+OK\r\n1 10\r\n.\r\n"));
    poplib::Timeouts timeouts;
    timeouts.soon = std::chrono::milliseconds(500);
    pop.setTimeouts(timeouts);
    ScriptedServer server(mailbox);
    const support::WhenItHolds box([&] { return server.commands().size() == 5; },
                                   [&] {
                                       const QDeadlineTimer open(timeouts.soon * 2);
                                       server.release();
                                       support::eventsRunUntil([&] { return open.hasExpired(); });
                                   });
    EXPECT_EQ(logOn(server), 0);
    EXPECT_EQ(server.connections(), 1U);
}

TEST_F(PopAhead, AServerThatRefusesListIsAskedMessageByMessage) {
    mailbox.answer("CAPA", kAnnouncesNothing).on("LIST", [](Peer& peer) { peer.send("-ERR which?\r\n"); });
    for (const char* const number : {"1", "2", "3"}) {
        mailbox.answer(std::string("LIST ") + number, std::string("+OK ") + number + " 7\r\n");
    }
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(sizes, ElementsAre(7, 7, 7));
    EXPECT_THAT(server.commands(), Contains("LIST 3"));
}

TEST_F(PopAhead, ASizeThatIsNoneIsTheErrorOfItsOwnMessageOnly) {
    mailbox.answer("CAPA", kAnnouncesNothing);
    mailbox.answer("LIST", "+OK\r\n1 10\r\n2 ten\r\nnonsense\r\n.\r\n");
    ScriptedServer server(mailbox);
    EXPECT_EQ(listing(server), errors::MailServerTrouble);
    EXPECT_THAT(sizes, ElementsAre(10, -errors::MailServerTrouble));
}

TEST_F(PopAhead, AMessageOfWhichTopIsRefusedIsFetchedBehindTheOthers) {
    mailbox.answer("TOP 2", "-ERR not this one\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "three]", "2", "two]"));
    EXPECT_THAT(server.commands(), Contains("RETR 2"));
    EXPECT_THAT(server.commands(), Not(Contains("RETR 1")));
    EXPECT_EQ(server.connections(), 2U) << "the first session was told to end";
    ASSERT_EQ(logOn(), 0);
    EXPECT_EQ(remove(2), 0) << "it can be deleted as any other";
}

TEST_F(PopAhead, TheOthersCanStillBeDeletedWhenTheFirstMessageIsFetchedBehindThem) {
    mailbox.answer("TOP 1", "-ERR not this one\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("two]", "three]", "1", "one]"));
    ASSERT_EQ(logOn(), 0);
    EXPECT_EQ(remove(3), 0);
    EXPECT_EQ(remove(1), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(mailbox.messages(), ElementsAre(support::message("two")));
}

TEST_F(PopAhead, OneServerWithoutTopAtAllGivesEveryMessageWhole) {
    mailbox.answer("TOP", "-ERR what?\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("1", "one]", "2", "two]", "3", "three]"));
}

TEST_F(PopAhead, AServerThatAnnouncesItAndCannotIsTroubleOnceAndServedOneByOneFromThenOn) {
    mailbox.on("LIST 1", [](Peer& peer) {
        peer.send("+OK 1 50\r\n");
        if (peer.connection() == 0) {
            peer.close();
        }
    });
    ScriptedServer server(mailbox);
    EXPECT_EQ(listing(server), errors::MailServerTrouble);
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(pop.roundTrips(), 11U) << "USER and PASS still go together";
    EXPECT_THAT(subjects(), ElementsAre("one]", "two]", "three]"));
}

TEST_F(PopAhead, AnErrorInTheMidstEndsTheSessionAtOnceAndNothingMoreIsRaised) {
    int lines = 0;
    pop.Header = [&lines](const std::string&, const std::string&) {
        if (++lines == 3) {
            throw platform::RuntimeError(errors::InvalidProcedureCall);
        }
    };
    ScriptedServer server(mailbox);
    EXPECT_EQ(listing(server), errors::InvalidProcedureCall);
    EXPECT_EQ(lines, 3);
    EXPECT_TRUE(server.waitForEndOf(1));
    pop.Header = nullptr;
    ASSERT_EQ(listing(), 0);
    EXPECT_EQ(pop.roundTrips(), 4U) << "CAPA, since the session failed; this was no fault of the server's";
}

TEST_F(PopAhead, AnErrorInTheMidstIsFollowedByNoQuit) {
    mailbox.answer("CAPA", kAnnouncesNoTop);
    pop.Header = [](const std::string&, const std::string&) {
        throw platform::RuntimeError(errors::InvalidProcedureCall);
    };
    ScriptedServer server(mailbox);
    EXPECT_EQ(listing(server), errors::InvalidProcedureCall);
    EXPECT_TRUE(server.waitForEndOf(1));
    EXPECT_THAT(server.keywords(), Not(Contains("QUIT")));
}

TEST_F(PopAhead, AnswersThatNobodyWantsAnyMoreAreReadOver) {
    mailbox.answer("CAPA", kAnnouncesNoTop);
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    pop.listAhead(1, 3, 25);
    ASSERT_EQ(listOne(1), 0);
    ASSERT_EQ(listOne(3), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "three]"));
    EXPECT_EQ(retrieve(2, 0), 0) << "a command that was not asked ahead";
    EXPECT_THAT(subjects(), ElementsAre("one]", "three]", "two]"));
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopAhead, TheListingIsAskedForBeforeAnythingIsDoneWithItsAnswers) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    const std::size_t heard = server.commands().size();
    pop.listAhead(1, 3, 25);
    constexpr std::size_t sizesAndTopsAndUniqueIdsAndQuit = 8;
    EXPECT_TRUE(support::eventsRunUntil(
        [&] { return server.commands().size() == heard + sizesAndTopsAndUniqueIdsAndQuit; }));
    ASSERT_EQ(listOne(1), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]"));
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopAhead, OpeningOneMessageTakesOneRoundTripBehindTheLogOn) {
    pop.setListing(false);
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    const std::uint64_t before = pop.roundTrips();
    pop.openAhead(2);
    EXPECT_GT(sizeOf(2), 0);
    EXPECT_EQ(retrieve(2, 0), 0);
    EXPECT_EQ(logOff(), 0);
    EXPECT_EQ(pop.roundTrips(), before + 1);
    EXPECT_THAT(server.keywords(), ElementsAre("CAPA", "USER", "PASS", "STAT", "LIST", "RETR", "QUIT"));
}

TEST_F(PopAhead, TheGuardOfADeletionAsksInOneRoundTripAndDeleteComesBehindItsAnswers) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    pop.setListing(false);
    ASSERT_EQ(logOn(), 0);
    const std::uint64_t before = pop.roundTrips();
    EXPECT_EQ(remove(2), 0);
    EXPECT_EQ(pop.roundTrips(), before + 2) << "UIDL, LIST and TOP; DELE";
    EXPECT_EQ(logOff(), 0);
    EXPECT_THAT(mailbox.messages(), SizeIs(2));
}

class PopAheadInPieces : public PopAhead, public testing::WithParamInterface<std::size_t> {};

TEST_P(PopAheadInPieces, AnswersToABurstComeInAnySizeOfPieces) {
    ScriptedServer server([](Peer& peer) {
        const std::size_t piece = GetParam();
        peer.send("+OK\r\n", piece);
        peer.readLine();
        peer.send("+OK\r\nUSER\r\nPIPELINING\r\n.\r\n", piece);
        peer.readLine();
        peer.readLine();
        peer.send("+OK\r\n+OK\r\n", piece);
        peer.readLine();
        peer.send("+OK 2 60\r\n", piece);
        for (int line = 0; line < 5; ++line) {
            peer.readLine();
        }
        peer.send(
            "+OK 1 30\r\n+OK\r\nSubject: one\r\n\r\n..\r\n.\r\n+OK 2 30\r\n+OK\r\nSubject: two\r\n\r\n.\r\n"
            "+OK\r\n1 a\r\n2 b\r\n.\r\n",
            piece);
        peer.readLine();
        peer.send("+OK\r\n", piece);
        peer.close();
    });
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(content, ElementsAre("header [Subject] [one]", "body 19 [.]", "header [Subject] [two]"));
}

INSTANTIATE_TEST_SUITE_P(Pieces, PopAheadInPieces, testing::Values(0, 1, 2, 7, 64));

class PopAheadCut : public PopAhead, public testing::WithParamInterface<support::Ending> {};

TEST_P(PopAheadCut, AListingThatBreaksOffAnywhereMakesNothingUp) {
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    const std::size_t total = server.bytesSent();
    const std::vector<std::string> whole = content;
    std::size_t failures = 0;
    for (std::size_t bytes = 0; bytes < total; ++bytes) {
        SCOPED_TRACE(bytes);
        server.cutAfter(bytes, GetParam());
        // A client that has met trouble asks one by one from then on.
        pop.forgetServer();
        const int error = listing();
        ASSERT_LE(content.size(), whole.size());
        ASSERT_TRUE(std::equal(content.begin(), content.end(), whole.begin()));
        failures += error == 0 ? 0U : 1U;
        ASSERT_TRUE(error == 0 || error == errors::MailServerTrouble) << error;
    }
    EXPECT_GT(failures, total / 2);
    EXPECT_LT(failures, total) << "nothing depends on the replies to UIDL and QUIT";
    server.cutNoMore();
    EXPECT_EQ(listing(), 0);
    EXPECT_EQ(content, whole);
}

INSTANTIATE_TEST_SUITE_P(Endings, PopAheadCut,
                         testing::Values(support::Ending::Close, support::Ending::Reset));

} // namespace
